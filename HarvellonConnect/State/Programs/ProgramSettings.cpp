#include "State/Programs/ProgramSettings.h"

#include "State/ActivityReport.h"
#include "System/Async.h"
#include "System/Managed/ManagedSettings.h"
#include "System/Preferences.h"

#include <QPointer>
#include <QVariantMap>

#include <algorithm>

namespace {
const QString editorsOfProjectsKey = QStringLiteral("EditorsOfProjects"); // "domain=key" lines
const QString databaseKey = QStringLiteral("DatabaseWay");
const QString tunnelWay = QStringLiteral("tunnel");
const QString ownName = QStringLiteral("Eigener Befehl");
constexpr QLatin1Char assigned('=');

QVariantMap entry(const QString& key, const QString& name, const QString& chosen) {
    return {{QStringLiteral("key"), key},
            {QStringLiteral("name"), name},
            {QStringLiteral("chosen"), key == chosen}};
}

/// `found`, and the chosen one even where it is not there any more.
void append(QVariantList& list, const QList<KnownProgram>& found, const QList<KnownProgram>& known,
            const QString& chosen) {
    for (const KnownProgram& program : known) {
        const bool isThere = found.contains(program);
        if (isThere || program.key == chosen)
            list.append(entry(
                program.key, isThere ? program.name : QStringLiteral("%1 (nicht gefunden)").arg(program.name),
                chosen));
    }
}

DatabaseWay wayOf(const QString& key) {
    if (key == tunnelWay)
        return DatabaseWay::tunnel;
    return key == databaseShell().key ? DatabaseWay::shell : DatabaseWay::ownSsh;
}

QHash<QString, QString> editorsIn(const QString& text) {
    QHash<QString, QString> editors;
    for (const QString& line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        editors.insert(line.section(assigned, 0, -2), line.section(assigned, -1));
    return editors;
}

QString textOf(const QHash<QString, QString>& editors) {
    QStringList lines;
    for (auto each = editors.begin(); each != editors.end(); ++each)
        lines.append(each.key() + assigned + each.value());
    lines.sort();
    return lines.join(QLatin1Char('\n'));
}
} // namespace

ProgramSettings::ProgramSettings(HostSystem host, Preferences& preferences, ActivityReport& report,
                                 std::function<void(const QString& domain)> openEditor)
    : m_host(std::move(host)), m_preferences(preferences), m_report(report),
      m_openEditor(std::move(openEditor)) {
    const auto kept = [&](const QString& key) { return preferences.text(key).value_or(QString()); };
    m_choices.editor = kept(SettingKey::editor);
    m_choices.editorCommand = kept(SettingKey::editorCommand);
    if (!editorIsFixed())
        m_choices.editorsOfProjects = editorsIn(kept(editorsOfProjectsKey));
    m_choices.terminal = kept(SettingKey::terminal);
    m_choices.terminalCommand = kept(SettingKey::terminalCommand);
    m_databaseWay = kept(databaseKey);
    m_choices.database = wayOf(m_databaseWay);
}

bool ProgramSettings::editorIsFixed() const {
    return m_preferences.fixed(SettingKey::editor).isValid();
}

bool ProgramSettings::terminalIsFixed() const {
    return m_preferences.fixed(SettingKey::terminal).isValid();
}

void ProgramSettings::look() {
    lookForPrograms();
}

QCoro::Task<> ProgramSettings::lookForPrograms() {
    using Found = QList<QList<KnownProgram>>;
    const QPointer<ProgramSettings> guard(this);
    const std::function<Found()> work = [known = Found{m_host.editors, m_host.terminals, {databaseShell()}},
                                         folders = m_host.programFolders] {
        Found found;
        for (const QList<KnownProgram>& programs : known)
            found.append(foundPrograms(programs, folders));
        return found;
    };
    const std::optional<Found> found = co_await Async::onWorker(work);
    const bool hasDatabaseShell = !found->last().isEmpty();
    if (!guard ||
        (found->at(0) == m_editors && found->at(1) == m_terminals && hasDatabaseShell == m_hasDatabaseShell))
        co_return;
    m_editors = found->at(0);
    m_terminals = found->at(1);
    m_hasDatabaseShell = hasDatabaseShell;
    Q_EMIT changed();
}

QVariantList ProgramSettings::editors() const {
    return editorsWith(m_choices.editor, true);
}

QVariantList ProgramSettings::editorsFor(const QString& domain) const {
    const QString chosen = m_choices.editorOf(domain);
    return editorsWith(chosen, chosen == ProgramChoices::own() || !m_choices.editorCommand.isEmpty());
}

QVariantList ProgramSettings::editorsWith(const QString& chosen, bool withOwn) const {
    QVariantList list{entry({}, QStringLiteral("VS Code"), chosen)};
    append(list, m_editors, m_host.editors, chosen);
    if (withOwn)
        list.append(entry(ProgramChoices::own(), ownName, chosen));
    return list;
}

QVariantList ProgramSettings::terminals() const {
    QVariantList list{entry({}, QStringLiteral("Wie im System"), m_choices.terminal)};
    append(list, m_terminals, m_host.terminals, m_choices.terminal);
    list.append(entry(ProgramChoices::own(), ownName, m_choices.terminal));
    return list;
}

QVariantList ProgramSettings::databaseWays() const {
    const QList<KnownProgram> shell{databaseShell()};
    QVariantList list{entry({}, QStringLiteral("Client mit eigenem SSH"), m_databaseWay),
                      entry(tunnelWay, QStringLiteral("Client über Tunnel"), m_databaseWay)};
    append(list, m_hasDatabaseShell ? shell : QList<KnownProgram>(), shell, m_databaseWay);
    return list;
}

void ProgramSettings::openWith(const QString& domain, const QString& key) {
    if (editorIsFixed())
        return;
    QHash<QString, QString>& editors = m_choices.editorsOfProjects;
    if (key == m_choices.editor)
        editors.remove(domain);
    else
        editors.insert(domain, key);
    const QString text = textOf(editors);
    m_report.remember(editorsOfProjectsKey, text.isEmpty() ? QVariant() : QVariant(text));
    Q_EMIT changed();
    m_openEditor(domain);
}

void ProgramSettings::setEditor(const QString& key) {
    choose(m_choices.editor, key, SettingKey::editor);
}

void ProgramSettings::setEditorCommand(const QString& line) {
    choose(m_choices.editorCommand, line, SettingKey::editorCommand);
}

void ProgramSettings::setTerminal(const QString& key) {
    choose(m_choices.terminal, key, SettingKey::terminal);
}

void ProgramSettings::setTerminalCommand(const QString& line) {
    choose(m_choices.terminalCommand, line, SettingKey::terminalCommand);
}

void ProgramSettings::setDatabaseWay(const QString& key) {
    m_choices.database = wayOf(key);
    choose(m_databaseWay, key, databaseKey);
}

void ProgramSettings::choose(QString& choice, const QString& value, const QString& preference) {
    if (choice == value || m_preferences.fixed(preference).isValid())
        return;
    choice = value;
    m_report.remember(preference, value.isEmpty() ? QVariant() : QVariant(value));
    Q_EMIT changed();
}
