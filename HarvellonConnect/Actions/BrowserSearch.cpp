#include "Actions/BrowserSearch.h"

#include "Actions/Rules/SearchDomain.h"
#include "System/Reporter.h"
#include "System/Shell.h"

namespace {
/// The system's number for an event to another program that the user has not allowed; the text around it is
/// in the user's language.
const QString notPermitted = QStringLiteral("(-1743)");

QCoro::Task<ShellResult> askBrowser(const ActionContext& context) {
    const ExternalCommand check = context.host.browserCheck;
    if (!check.executable.isEmpty()) {
        const ShellResult running = co_await context.shell.run(check.executable, check.arguments);
        if (running.exitCode != 0)
            co_return running;
    }
    const ExternalCommand query = context.host.browserQuery;
    co_return co_await context.shell.run(query.executable, query.arguments);
}
} // namespace

QCoro::Task<ActiveTab> domainOfActiveTab(const ActionContext& context) {
    ShellResult result;
    try {
        result = co_await askBrowser(context);
    } catch (const ShellError& error) {
        context.report.log(QStringLiteral("Chrome-Abfrage fehlgeschlagen: ") + error.description(),
                           ActivityLogLevel::warning);
        co_return ActiveTab{};
    }
    if (result.exitCode != 0) {
        context.report.log(QStringLiteral("Chrome-Tab konnte nicht gelesen werden: ") +
                               result.stderr.trimmed(),
                           ActivityLogLevel::warning);
        co_return ActiveTab{std::nullopt, result.stderr.contains(notPermitted)};
    }
    const QString address = result.stdout.trimmed();
    const std::optional<QString> domain = searchDomain(address);
    if (domain)
        context.report.log(QStringLiteral("Suche mit Chrome-Domain gefuellt: ") + *domain,
                           ActivityLogLevel::info);
    else
        context.report.log(QStringLiteral("Chrome-Tab-URL unbrauchbar: ") + address,
                           ActivityLogLevel::warning);
    co_return ActiveTab{domain};
}
