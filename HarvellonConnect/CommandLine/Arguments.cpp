#include "CommandLine/Arguments.h"

#include "System/Text.h"

#include <QHash>

namespace {
using Command = Request::Command;

struct Verb {
    Command command = Command::show;
    qsizetype fewestWords = 0; ///< behind the command
    qsizetype mostWords = 0;
    bool takesJson = false;
    bool mayStart = true;
};

const QHash<QString, Verb>& verbs() {
    static const QHash<QString, Verb> known{
        {QStringLiteral("list"), {.command = Command::list, .takesJson = true}},
        {QStringLiteral("status"), {.command = Command::status, .takesJson = true, .mayStart = false}},
        {QStringLiteral("toggle"), {.command = Command::toggle}},
        {QStringLiteral("connect"), {.command = Command::connect, .fewestWords = 1, .mostWords = 1}},
        {QStringLiteral("disconnect"), {.command = Command::disconnect, .mostWords = 1, .mayStart = false}},
        {QStringLiteral("open"), {.command = Command::open, .fewestWords = 1, .mostWords = 1}},
        {QStringLiteral("search"), {.command = Command::search, .fewestWords = 2, .mostWords = 2}}};
    return known;
}

[[noreturn]] void refuse(const QString& reason) {
    throw RequestError(ExitStatus::wrongUsage, reason);
}

/// The words that are no options, after what the options say has been noted in `invocation`.
QStringList takeOptions(const QStringList& words, const Verb& verb, Invocation& invocation, bool& all) {
    QStringList plain;
    bool open = true;
    bool chosen = false;
    for (const QString& word : words) {
        const std::optional<OpenTarget> target =
            word.startsWith(QLatin1String("--")) ? openTarget(word.mid(2)) : std::nullopt;
        if (!open || !word.startsWith(QLatin1Char('-')) || word == QLatin1String("-")) {
            plain.append(word);
        } else if (word == QLatin1String("--")) {
            open = false;
        } else if (word == QLatin1String("--no-start")) {
            invocation.mayStart = false;
        } else if (word == QLatin1String("--json") && verb.takesJson) {
            invocation.request.json = true;
        } else if (word == QLatin1String("--all") && verb.command == Command::disconnect) {
            all = true;
        } else if (target && verb.command == Command::open && !chosen) {
            chosen = true;
            invocation.request.target = *target;
        } else {
            refuse(QStringLiteral("%1 passt hier nicht.").arg(printable(word)));
        }
    }
    return plain;
}
} // namespace

Invocation Invocation::of(const QStringList& words) {
    if (words.isEmpty())
        return {};
    const QString& first = words.first();
    if (first.startsWith(QLatin1String("harvellon:"), Qt::CaseInsensitive)) {
        Invocation link{.kind = Kind::request, .mayStart = true};
        if (link.request.text = first; link.request.toLine().size() > Request::longest)
            link.request.text.clear(); // no domain is that long
        return link;
    }
    for (const QString& word : words) {
        if (word == QLatin1String("--"))
            break;
        if (word == QLatin1String("--help") || word == QLatin1String("-h"))
            return {.kind = Kind::help};
        if (word == QLatin1String("--version"))
            return {.kind = Kind::version};
    }
    const auto verb = verbs().constFind(first);
    if (verb == verbs().constEnd())
        refuse(QStringLiteral("%1 ist kein Befehl.").arg(printable(first)));
    Invocation invocation{.kind = Kind::request, .mayStart = verb->mayStart};
    invocation.request.command = verb->command;
    bool all = false;
    const QStringList plain = takeOptions(words.mid(1), *verb, invocation, all);
    if (plain.size() < verb->fewestWords)
        refuse(verb->fewestWords == 2 ? QStringLiteral("%1 braucht ein Projekt und einen Text.").arg(first)
                                      : QStringLiteral("%1 braucht ein Projekt.").arg(first));
    if (plain.size() > verb->mostWords)
        refuse(QStringLiteral("%1 passt hier nicht.").arg(printable(plain.at(verb->mostWords))));
    if (verb->command == Command::disconnect && all != plain.isEmpty())
        refuse(QStringLiteral("disconnect braucht ein Projekt oder --all."));
    invocation.request.project = plain.value(0);
    if (invocation.request.project.isEmpty() && !plain.isEmpty())
        refuse(QStringLiteral("%1 braucht ein Projekt.").arg(first));
    invocation.request.text = plain.value(1);
    if (invocation.request.toLine().size() > Request::longest)
        refuse(QStringLiteral("Das ist zu lang."));
    return invocation;
}

QString usage() {
    return QStringLiteral(R"(Aufruf: harvellon-connect [BEFEHL]

  (ohne Befehl)             Programm starten oder sein Fenster zeigen
  list [--json]             Projekte auflisten: Domain, Zustand, Name
  status [--json]           Anmeldung und verbundene Projekte zeigen
  connect PROJEKT           Projekt verbinden; schreibt den Ordner
  disconnect PROJEKT|--all  Projekt trennen, oder alle
  open PROJEKT [ZIEL]       Projekt öffnen: --editor (Vorgabe), --files, --site,
                            --admin, --shell, --database
  search PROJEKT TEXT       Text in den Dateien eines verbundenen Projekts suchen;
                            schreibt Datei:Zeile:Text
  toggle                    Fenster zeigen oder verbergen
  harvellon:DOMAIN          Projekt im Fenster auswählen

  --no-start                Programm nicht starten, wenn es nicht läuft
  --help, --version         diese Hilfe, Version

PROJEKT ist die Domain, ohne „www.“ oder nur ihr Anfang, wenn er eindeutig ist.
Exit: 0 erledigt, 1 gescheitert, 2 falscher Aufruf oder unbekanntes Projekt,
3 nicht angemeldet oder Programm nicht erreichbar; search endet wie grep.
)");
}
