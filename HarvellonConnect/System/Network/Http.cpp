#include "System/Network/Http.h"

#include "System/Network/SingleRequest.h"

#include <QCoroNetworkReply>
#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QScopedPointer>
#include <QTimer>

std::optional<QUrl> Http::address(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    return url.isValid() && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

QCoro::Task<HttpAnswer> Http::exchange(QNetworkAccessManager& network, QNetworkRequest request,
                                       QByteArray method, QByteArray body, std::chrono::milliseconds limit,
                                       qint64 largestBody, Redirects redirects) {
    if (method != "GET")
        co_return co_await SingleRequest::exchange(request, method, body, limit, largestBody);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         redirects == Redirects::followed ? QNetworkRequest::NoLessSafeRedirectPolicy
                                                          : QNetworkRequest::ManualRedirectPolicy);
    // Compressed answers would be unpacked without a bound; ask for none.
    request.setRawHeader("Accept-Encoding", "identity");

    const std::unique_ptr<QNetworkReply, QScopedPointerDeleteLater> reply(
        network.sendCustomRequest(request, method, body));
    bool late = false;
    bool tooLarge = false;
    // A time-out of the request itself counts silence only; an answer in drips would go on for ever.
    QElapsedTimer sinceAsked;
    sinceAsked.start();
    const auto giveUp = [&late, reply = reply.get()] {
        late = true;
        reply->abort();
    };
    QTimer::singleShot(limit, Qt::PreciseTimer, reply.get(),
                       [limit, giveUp, sinceAsked, reply = reply.get()] {
                           if (sinceAsked.hasExpired((limit + graceAfterSleep).count()))
                               QTimer::singleShot(graceAfterSleep, reply, giveUp);
                           else
                               giveUp();
                       });
    QObject::connect(reply.get(), &QNetworkReply::readyRead, reply.get(),
                     [&tooLarge, largestBody, reply = reply.get()] {
                         if (largestBody == statusAlone || reply->bytesAvailable() <= largestBody)
                             return;
                         tooLarge = true;
                         reply->abort();
                     });
    bool answered = false;
    QObject::connect(reply.get(), &QNetworkReply::metaDataChanged, reply.get(),
                     [&answered, largestBody, redirects, reply = reply.get()] {
                         const int status =
                             reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
                         const bool followed = redirects == Redirects::followed && status > 300 &&
                                               status <= 308 && reply->hasRawHeader("Location");
                         if (largestBody != statusAlone || followed)
                             return;
                         answered = true;
                         QTimer::singleShot(0, reply, &QNetworkReply::abort);
                     });
    if (!reply->isFinished())
        co_await reply.get();

    if (late)
        throw NetworkError(lateAnswer);
    if (tooLarge)
        throw NetworkError(largeAnswer);
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (reply->error() == QNetworkReply::InsecureRedirectError)
        throw NetworkError(
            QStringLiteral("Die Weiterleitung führt auf eine Adresse, die nicht mit https gesichert ist."));
    if (reply->error() == QNetworkReply::TooManyRedirectsError)
        throw NetworkError(QStringLiteral("Zu viele Weiterleitungen."));
    // With a status the server has spoken: an error then only repeats it, unless the transfer itself failed.
    const QNetworkReply::NetworkError error = reply->error();
    if (!answered && error != QNetworkReply::NoError &&
        (!status.isValid() || error < QNetworkReply::ProxyConnectionRefusedError))
        throw NetworkError(reply->errorString());
    co_return HttpAnswer{status.toInt(), reply->readAll()};
}
