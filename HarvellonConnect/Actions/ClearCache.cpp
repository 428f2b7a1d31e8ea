#include "Actions/ClearCache.h"

#include "Actions/Rules/SiteAddresses.h"
#include "Directory/PlainDomain.h"
#include "System/Network/Http.h"
#include "System/Reporter.h"

using namespace std::chrono_literals;

namespace {
QCoro::Task<Ending> request(QNetworkAccessManager& network, Project project) {
    const QString address = cacheAddress(project);
    const std::optional<QUrl> url = Http::address(address);
    if (!url || !isPlainSite(project.domain))
        throw EndedEarly(QStringLiteral("Ungueltige Cache-URL: ") + address);
    const QNetworkRequest message(*url);
    const QByteArray method("GET");
    const QByteArray noBody;
    const HttpAnswer answer = co_await Http::exchange(network, message, method, noBody, 10s,
                                                      Http::statusAlone, Http::Redirects::followed);
    if (answer.status == 0)
        throw EndedEarly(QStringLiteral("Cache-Request hatte keine HTTP-Antwort."));
    if (!answer.succeeded())
        throw EndedEarly(QStringLiteral("Cache-Request fuer %1 scheiterte mit Status %2.")
                             .arg(project.domain)
                             .arg(answer.status));
    co_return Ending{QStringLiteral("Cache fuer %1 geleert.").arg(project.domain), ActivityLogLevel::success};
}
} // namespace

QCoro::Task<> clearCache(ActionContext& context, Project project, bool /*alternative*/) {
    const OperationTexts texts{.begin = QStringLiteral("Leere Cache fuer %1...").arg(project.domain),
                               .failure = QStringLiteral("Cache leeren fehlgeschlagen: ")};
    const std::function<QCoro::Task<Ending>()> work = [&context, project] {
        return request(context.network, project);
    };
    co_await context.report.run(texts, work);
}
