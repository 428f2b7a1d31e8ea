#include "Actions/OpenDatabase.h"

#include "Actions/Openers.h"
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

QCoro::Task<Ending> readAndOpen(const ActionContext& context, Project project) {
    if (!isPlainDomain(project.domain))
        throw EndedEarly(QStringLiteral("SSH-Verbindung fehlgeschlagen: Die Domain ist nicht zulässig."));
    const QString scheme = QStringLiteral("mysql");
    const bool hasClient = co_await opensAddresses(context, scheme);
    if (!hasClient)
        throw EndedEarly(QStringLiteral("Kein Programm öffnet Datenbank-Adressen (mysql:). Bitte einen "
                                        "Datenbank-Client installieren."));
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
    openSecretAddress(context, databaseAddress(project, *credentials, context.host.homeFolder));
    co_return Ending{
        QStringLiteral("Oeffne %1 DB in Sequel Ace (%2)...").arg(project.domain, credentials->database),
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
