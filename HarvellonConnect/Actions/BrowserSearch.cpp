#include "Actions/BrowserSearch.h"

#include "Actions/Rules/SearchDomain.h"
#include "System/Reporter.h"
#include "System/Shell.h"

QCoro::Task<std::optional<QString>> domainOfActiveTab(const ActionContext& context) {
    const ExternalCommand query = context.host.browserQuery;
    ShellResult result;
    try {
        result = co_await context.shell.run(query.executable, query.arguments);
    } catch (const ShellError& error) {
        context.report.log(QStringLiteral("Chrome-Abfrage fehlgeschlagen: ") + error.description(),
                           ActivityLogLevel::warning);
        co_return std::nullopt;
    }
    if (result.exitCode != 0) {
        context.report.log(QStringLiteral("Chrome-Tab konnte nicht gelesen werden: ") +
                               result.stderr.trimmed(),
                           ActivityLogLevel::warning);
        co_return std::nullopt;
    }
    const QString address = result.stdout.trimmed();
    const std::optional<QString> domain = searchDomain(address);
    if (domain)
        context.report.log(QStringLiteral("Suche mit Chrome-Domain gefuellt: ") + *domain,
                           ActivityLogLevel::info);
    else
        context.report.log(QStringLiteral("Chrome-Tab-URL unbrauchbar: ") + address,
                           ActivityLogLevel::warning);
    co_return domain;
}
