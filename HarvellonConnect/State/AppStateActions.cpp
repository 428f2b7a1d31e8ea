#include "State/AppState.h"

#include "Actions/DatabaseCredentials.h"
#include "Actions/SearchDomain.h"
#include "Actions/SiteAddresses.h"
#include "Actions/TerminalProgram.h"
#include "Directory/PlainDomain.h"
#include "System/Async.h"
#include "System/Network/Http.h"

#include <QNetworkRequest>
#include <QUrl>

using namespace std::chrono_literals;

namespace {
constexpr auto longestReading = 30s; // of a configuration from a host that may fall silent
}

/// Hands an address or a folder to the user's own program. Where nothing opens, that is plain to see.
void AppState::openAddress(const QString& address) {
    try {
        m_shell.launch(m_host.opener.executable, m_host.opener.argumentsFor(address));
    } catch (const ShellError&) {
    }
}

QCoro::Task<bool> AppState::opensAddresses(QString scheme) {
    if (m_host.handlerQuery.executable.isEmpty())
        co_return true;
    const QStringList arguments =
        m_host.handlerQuery.argumentsFor(QStringLiteral("x-scheme-handler/") + scheme);
    try {
        const ShellResult result = co_await m_shell.run(m_host.handlerQuery.executable, arguments, 5s);
        co_return result.exitCode == 0 && !result.stdout.trimmed().isEmpty();
    } catch (const ShellError&) {
        co_return false;
    }
}

/// A terminal window, empty or with a command in it.
void AppState::openTerminal(const QStringList& command) {
    ExternalCommand terminal = m_host.terminal;
    if (terminal.executable.isEmpty()) {
        const std::optional<ExternalCommand> found = terminalProgram({}, qEnvironmentVariable("TERMINAL"));
        if (!found) {
            log(QStringLiteral("Kein Terminal gefunden."), ActivityLogLevel::warning);
            return;
        }
        terminal = {found->executable, command.isEmpty() ? QStringList() : found->arguments + command};
    }
    try {
        m_shell.launch(terminal.executable, terminal.arguments);
    } catch (const ShellError&) {
    }
}

void AppState::startOpenInFinder(const QString& domain) {
    if (const std::optional<Project> known = project(domain))
        openInFinder(*known);
}

void AppState::openInFinder(const Project& project) {
    const std::optional<QString> mountPoint = m_sshfsMounter.mountPoint(project.domain);
    if (!mountPoint) {
        log(QStringLiteral("CloudStorage-Verzeichnis fuer %1 nicht gefunden.").arg(project.domain),
            ActivityLogLevel::warning);
        return;
    }
    openAddress(*mountPoint);
    log(QStringLiteral("Öffne %1 im Finder...").arg(project.domain), ActivityLogLevel::info);
}

void AppState::startOpenInVSCode(const QString& domain) {
    if (const std::optional<Project> known = project(domain))
        openInVSCode(*known);
}

QCoro::Task<> AppState::openInVSCode(Project project) {
    const std::optional<QString> mountPoint = m_sshfsMounter.mountPoint(project.domain);
    if (!mountPoint) {
        log(QStringLiteral("CloudStorage-Verzeichnis fuer %1 nicht gefunden.").arg(project.domain),
            ActivityLogLevel::warning);
        co_return;
    }
    const QString root = *mountPoint;
    const std::optional<QString> target = co_await documentTarget(project, root, 3s);
    if (!target) {
        log(QStringLiteral("Projektordner fuer %1 konnte nicht geoeffnet werden.").arg(project.domain),
            ActivityLogLevel::warning);
        co_return;
    }
    const QString folder = *target;
    const QString domain = project.domain;
    co_await m_editor.open(domain, folder);
    log(QStringLiteral("Oeffne %1 in VS Code...").arg(domain), ActivityLogLevel::info);
}

void AppState::startOpenSite(const QString& domain, bool backEnd) {
    if (const std::optional<Project> known = project(domain))
        openAddress(siteAddress(*known, backEnd));
}

void AppState::startOpenShell(const QString& domain) {
    if (const std::optional<Project> known = project(domain))
        openShell(*known);
}

QCoro::Task<> AppState::openShell(Project project) {
    const QString scheme = QStringLiteral("ssh");
    const bool hasHandler = co_await opensAddresses(scheme);
    if (hasHandler) {
        openAddress(shellAddress(project));
        co_return;
    }
    if (const std::optional<QStringList> arguments = shellArguments(project))
        openTerminal(QStringList{m_host.ssh} + *arguments);
    else
        log(QStringLiteral("SSH-Shell nicht moeglich: %1 ist kein Rechnername.").arg(project.domain),
            ActivityLogLevel::warning);
}

void AppState::startClearCache(const QString& domain) {
    if (const std::optional<Project> known = project(domain))
        clearCache(*known);
}

QCoro::Task<> AppState::clearCache(Project project) {
    constexpr qint64 ignoredBody = 16 * 1024 * 1024;
    const QString address = cacheAddress(project);
    const QString domain = project.domain;
    log(QStringLiteral("Leere Cache fuer %1...").arg(domain), ActivityLogLevel::info);
    const std::optional<QUrl> url = Http::address(address);
    if (!url) {
        log(QStringLiteral("Ungueltige Cache-URL: ") + address, ActivityLogLevel::error);
        co_return;
    }
    const QNetworkRequest request(*url);
    const QByteArray method("GET");
    const QByteArray noBody;
    try {
        const HttpAnswer answer = co_await Http::exchange(m_network, request, method, noBody, 10s,
                                                          ignoredBody, Http::Redirects::followed);
        if (answer.status == 0)
            log(QStringLiteral("Cache-Request hatte keine HTTP-Antwort."), ActivityLogLevel::error);
        else if (answer.succeeded())
            log(QStringLiteral("Cache fuer %1 geleert.").arg(domain), ActivityLogLevel::success);
        else
            log(QStringLiteral("Cache-Request fuer %1 scheiterte mit Status %2.")
                    .arg(domain)
                    .arg(answer.status),
                ActivityLogLevel::error);
    } catch (const NetworkError& error) {
        log(QStringLiteral("Cache leeren fehlgeschlagen: ") + error.description(), ActivityLogLevel::error);
    }
}

void AppState::startOpenDatabase(const QString& domain) {
    if (const std::optional<Project> known = project(domain))
        openDatabase(*known);
}

QCoro::Task<> AppState::openDatabase(Project project) {
    log(QStringLiteral("Lese DB-Konfiguration von %1...").arg(project.domain), ActivityLogLevel::info);
    if (!isPlainDomain(project.domain)) {
        log(QStringLiteral("SSH-Verbindung fehlgeschlagen: Die Domain ist nicht zulässig."),
            ActivityLogLevel::error);
        co_return;
    }
    const QStringList arguments = configurationArguments(project);
    ShellResult result;
    try {
        result = co_await m_shell.run(m_host.ssh, arguments, longestReading);
    } catch (const ShellError& error) {
        log(QStringLiteral("SSH-Verbindung fehlgeschlagen: ") + error.description(), ActivityLogLevel::error);
        co_return;
    }
    if (result.exitCode != 0) {
        log(QStringLiteral("Config konnte nicht gelesen werden: ") + result.stderr.trimmed(),
            ActivityLogLevel::error);
        co_return;
    }
    using Found = std::optional<DatabaseCredentials>;
    const std::function<Found()> extract = [text = result.stdout, type = project.type] {
        return credentialsIn(text, type);
    };
    const std::optional<Found> answer = co_await Async::onWorker(extract);
    const Found credentials = answer.value_or(std::nullopt);
    if (!credentials) {
        log(QStringLiteral("DB-Credentials konnten nicht aus der Config gelesen werden."),
            ActivityLogLevel::error);
        co_return;
    }
    const QString address = databaseAddress(project, *credentials, m_host.homeFolder);
    const QString database = credentials->database;
    openAddress(address);
    log(QStringLiteral("Oeffne %1 DB in Sequel Ace (%2)...").arg(project.domain, database),
        ActivityLogLevel::success);
}

void AppState::startFillSearchFromChrome() {
    fillSearchFromChrome();
}

QCoro::Task<> AppState::fillSearchFromChrome() {
    const ExternalCommand query = m_host.browserQuery;
    ShellResult result;
    try {
        result = co_await m_shell.run(query.executable, query.arguments);
    } catch (const ShellError& error) {
        log(QStringLiteral("Chrome-Abfrage fehlgeschlagen: ") + error.description(),
            ActivityLogLevel::warning);
        co_return;
    }
    if (result.exitCode != 0) {
        log(QStringLiteral("Chrome-Tab konnte nicht gelesen werden: ") + result.stderr.trimmed(),
            ActivityLogLevel::warning);
        co_return;
    }
    const QString address = result.stdout.trimmed();
    const std::optional<QString> domain = searchDomain(address);
    if (!domain) {
        log(QStringLiteral("Chrome-Tab-URL unbrauchbar: ") + address, ActivityLogLevel::warning);
        co_return;
    }
    setSearchText(*domain);
    log(QStringLiteral("Suche mit Chrome-Domain gefuellt: ") + *domain, ActivityLogLevel::info);
}
