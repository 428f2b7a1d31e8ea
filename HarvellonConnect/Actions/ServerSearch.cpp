#include "Actions/ServerSearch.h"

#include "Directory/PlainDomain.h"
#include "System/Async.h"
#include "System/Shell.h"
#include "System/Ssh/SharedConnections.h"
#include "System/Ssh/SshOptions.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace {
constexpr auto callLimit = 35s; // grep itself is given 30
constexpr qsizetype longestPattern = 1000;
constexpr qsizetype mostBytes = 1'000'000;

/// The exit status of the command line; 0 and 1 are grep's for hits and for none.
enum Status : qint32 {
    found = 0,
    nothing = 1,
    unreadable = 2, // some files, or the folder
    noFolder = 5,
    noSuitableGrep = 6,
    timeOver = 124, // of timeout(1)
    cutOff = 141,   // grep had more to say than is wanted
    sshFailed = 255,
};

QString shellWord(QString text) {
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QStringLiteral("'\\''")) + QLatin1Char('\'');
}

void throwUnlessOneLine(const QString& pattern) {
    const bool ends = std::any_of(pattern.begin(), pattern.end(), [](QChar character) {
        return character == QLatin1Char('\n') || character == QChar(QChar::Null);
    });
    if (pattern.isEmpty() || pattern.size() > longestPattern || ends)
        throw SearchError(
            QStringLiteral("Gesucht wird ein Text von 1 bis %1 Zeichen in einer Zeile.").arg(longestPattern));
}

void throwUnlessSearched(const ShellResult& result) {
    switch (result.exitCode) {
    case found:
    case nothing:
    case unreadable:
    case timeOver:
    case cutOff:
        return;
    case Shell::timedOut:
        throw SearchError(QStringLiteral("Der Server hat auf die Suche nicht rechtzeitig geantwortet."));
    case noFolder:
        throw SearchError(QStringLiteral("Der Ordner des Projekts ist auf dem Server nicht zugänglich."));
    case noSuitableGrep:
        throw SearchError(QStringLiteral("Das grep des Servers kann diese Suche nicht."));
    case sshFailed:
        throw SearchError(QStringLiteral("SSH-Verbindung fehlgeschlagen: ") + result.stderr.trimmed());
    default:
        throw SearchError(
            QStringLiteral("Die Suche auf dem Server ist gescheitert (Exit %1).").arg(result.exitCode));
    }
}
} // namespace

QString searchCommand(const QString& folder, const QString& pattern) {
    // Other greps know neither -I nor --null, and a name with a line feed could then pass for a hit. A name
    // is at most 4,095 bytes long, so cutting lines takes from the text alone. The status passes by cut and
    // head through descriptor 3.
    return QStringLiteral(
               "export LC_ALL=C; cd -- %1 || exit %3; "
               "printf 'a\\n' | grep -rnsIF --null --exclude-dir=b -- a - >/dev/null 2>&1 || exit %4; "
               "limit=$(command -v timeout) && limit=\"$limit 30\"; exec 4>&1; "
               "status=$({ { $limit grep -rnsIF --null --exclude-dir=.git --exclude-dir=node_modules -- %2 "
               ".; "
               "echo $? >&3; } | cut -b 1-4600 | head -c %5 >&4; } 3>&1); exit \"$status\"")
        .arg(shellWord(folder), shellWord(pattern), QString::number(noFolder),
             QString::number(noSuitableGrep),
             QString::number(mostBytes)); // all at once: the first two may contain percent signs
}

QCoro::Task<SearchHits> searchOnServer(const ActionContext& context, Project project, QString pattern) {
    throwUnlessOneLine(pattern);
    if (!isPlainDomain(project.domain))
        throw SearchError(QStringLiteral("%1 ist kein Rechnername.").arg(printableDomain(project.domain)));
    const std::optional<QString> mountPoint = context.mountPoint(project.domain);
    if (!mountPoint)
        throw SearchError(QStringLiteral("%1 ist nicht verbunden.").arg(project.domain));
    const QString login = project.sshLogin();
    const QStringList shared = co_await context.shared.answering(login);
    const QStringList arguments = shared + ownTrustArguments(context.host) +
                                  QStringList{QStringLiteral("-o"),
                                              QStringLiteral("LogLevel=ERROR"),
                                              QStringLiteral("-T"),
                                              QStringLiteral("-n"),
                                              login,
                                              searchCommand(project.path, pattern)};
    const ShellResult result = co_await context.shell.run(context.host.ssh, arguments, callLimit);
    throwUnlessSearched(result);

    const std::function<SearchHits()> read = [output = result.bytes, folder = *mountPoint] {
        return hitsIn(output, folder);
    };
    const std::optional<SearchHits> answer = co_await Async::onWorker(read);
    SearchHits hits = answer.value_or(SearchHits());
    hits.more = hits.more || result.bytes.size() >= mostBytes;
    hits.incomplete = result.exitCode == unreadable || result.exitCode == timeOver;
    co_return hits;
}
