#include "Actions/OpenDatabase.h"

#include "Actions/Database/DatabaseShell.h"
#include "Actions/Database/DatabaseTunnels.h"
#include "Actions/Openers.h"
#include "Actions/Programs/ProgramChoices.h"
#include "Actions/Rules/DatabaseCredentials.h"
#include "Directory/PlainDomain.h"
#include "System/Async.h"
#include "System/Reporter.h"
#include "System/Shell.h"
#include "System/Ssh/SharedConnections.h"

using namespace std::chrono_literals;

namespace {
constexpr auto readLimit = 30s; // a server that falls silent must not keep ssh for ever

QCoro::Task<ShellResult> readConfiguration(const ActionContext& context, Project project) {
    const QString login = project.sshLogin();
    const QStringList command = configurationCommand(project);
    const std::optional<ShellResult> shared = co_await context.shared.run(login, command);
    if (shared)
        co_return *shared;
    const QStringList arguments = configurationArguments(project);
    co_return co_await context.shell.run(context.host.ssh, arguments, readLimit);
}

/// The program that opens the database: the path of mysql, or empty for the one that the desktop has for
/// addresses. Throws EndedEarly where there is none.
QCoro::Task<QString> databaseProgram(const ActionContext& context, DatabaseWay way) {
    if (way == DatabaseWay::shell) {
        const std::optional<QString> mysql = findProgram(databaseShell().files, context.host.programFolders);
        if (!mysql)
            throw EndedEarly(missingProgram(QStringLiteral("mysql")));
        co_return *mysql;
    }
    const QString scheme = QStringLiteral("mysql");
    const bool hasClient = co_await opensAddresses(context, scheme);
    if (!hasClient)
        throw EndedEarly(QStringLiteral("Kein Programm öffnet Datenbank-Adressen (mysql:). Bitte einen "
                                        "Datenbank-Client installieren."));
    co_return QString();
}

QCoro::Task<DatabaseCredentials> readCredentials(const ActionContext& context, Project project) {
    const ShellResult result = co_await readConfiguration(context, project);
    if (result.exitCode != 0)
        throw EndedEarly(QStringLiteral("Config konnte nicht gelesen werden: ") + result.stderr.trimmed());

    using Found = std::optional<DatabaseCredentials>;
    const std::function<Found()> extract = [text = result.stdout, type = project.type] {
        return credentialsIn(text, type);
    };
    const std::optional<Found> answer = co_await Async::onWorker(extract);
    const Found credentials = answer.value_or(std::nullopt);
    if (!credentials)
        throw EndedEarly(QStringLiteral("DB-Credentials konnten nicht aus der Config gelesen werden."));
    co_return *credentials;
}

QCoro::Task<quint16> tunnelPort(const ActionContext& context, QString login) {
    try {
        const quint16 port = co_await context.tunnels.open(login);
        co_return port;
    } catch (const TunnelError& error) {
        throw EndedEarly(error.description());
    }
}

QCoro::Task<Ending> readAndOpen(const ActionContext& context, Project project) {
    if (!isPlainDomain(project.domain))
        throw EndedEarly(QStringLiteral("SSH-Verbindung fehlgeschlagen: Die Domain ist nicht zulässig."));
    const DatabaseWay way = context.programs.database;
    const QString program = co_await databaseProgram(context, way);
    const DatabaseCredentials credentials = co_await readCredentials(context, project);
    if (way == DatabaseWay::ownSsh) {
        openSecretAddress(context, databaseAddress(project, credentials, context.host.homeFolder));
        co_return Ending{
            QStringLiteral("Oeffne %1 DB in Sequel Ace (%2)...").arg(project.domain, credentials.database),
            ActivityLogLevel::success};
    }
    const QString login = project.sshLogin();
    const quint16 port = co_await tunnelPort(context, login);
    if (way == DatabaseWay::tunnel)
        openSecretAddress(context, tunnelledAddress(credentials, port));
    else if (!openDatabaseShell(context, program, credentials, port))
        co_return Ending{}; // the user has been told
    co_return Ending{QStringLiteral("Öffne %1 DB (%2) über den Tunnel 127.0.0.1:%3...")
                         .arg(project.domain, credentials.database, QString::number(port)),
                     ActivityLogLevel::success};
}
} // namespace

QCoro::Task<> openDatabase(ActionContext& context, Project project, bool /*alternative*/) {
    const OperationTexts texts{.begin = QStringLiteral("Lese DB-Konfiguration von %1...").arg(project.domain),
                               .failure = QStringLiteral("SSH-Verbindung fehlgeschlagen: ")};
    const std::function<QCoro::Task<Ending>()> work = [&context, project] {
        return readAndOpen(context, project);
    };
    co_await context.report.run(texts, work);
}
