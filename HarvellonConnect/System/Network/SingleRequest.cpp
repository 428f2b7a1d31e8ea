#include "System/Network/SingleRequest.h"

#include "System/Async.h"
#include "System/Network/HttpAnswerReader.h"

#include <QElapsedTimer>
#include <QPromise>
#include <QSslConfiguration>
#include <QSslSocket>

#include <algorithm>

namespace {
QByteArray messageOf(const QNetworkRequest& request, const QByteArray& method, const QByteArray& body) {
    const QUrl url = request.url();
    QByteArray target = url.path(QUrl::FullyEncoded).toLatin1();
    if (target.isEmpty())
        target = "/";
    if (url.hasQuery())
        target += '?' + url.query(QUrl::FullyEncoded).toLatin1();
    QByteArray message = method + ' ' + target + " HTTP/1.1\r\n";
    const auto add = [&message](const QByteArray& name, const QByteArray& value) {
        message += name + ": " + value.simplified() + "\r\n"; // a line break would begin another header
    };
    add("Host", url.authority(QUrl::FullyEncoded | QUrl::RemoveUserInfo).toLatin1());
    const QList<QByteArray> names = request.rawHeaderList();
    for (const QByteArray& name : names)
        add(name, request.rawHeader(name));
    add("User-Agent", "HarvellonConnect");
    add("Content-Length", QByteArray::number(body.size()));
    add("Connection", "close");
    return message + "\r\n" + body;
}
} // namespace

QCoro::Task<HttpAnswer> SingleRequest::exchange(QNetworkRequest request, QByteArray method, QByteArray body,
                                                std::chrono::milliseconds limit, qint64 largestBody) {
    const QUrl url = request.url();
    const bool secure = url.scheme() == QLatin1String("https");
    if (!secure && url.scheme() != QLatin1String("http"))
        throw NetworkError(QStringLiteral("Die Adresse gehört zu keinem Webserver."));
    constexpr int httpPort = 80;
    constexpr int httpsPort = 443;
    const auto port = static_cast<quint16>(url.port(secure ? httpsPort : httpPort));
    const QString host = url.host(QUrl::FullyEncoded);

    HttpAnswerReader reader(largestBody);
    HttpAnswerReader::State state = HttpAnswerReader::State::incomplete;
    QPromise<void> promise;
    promise.start();
    QSslSocket socket;
    const auto take = [&] {
        state = reader.read(socket.readAll());
        if (state != HttpAnswerReader::State::incomplete)
            promise.finish();
    };
    const auto end = [&] {
        take();
        state = reader.end();
        promise.finish();
    };
    QObject::connect(&socket, secure ? &QSslSocket::encrypted : &QSslSocket::connected, &socket,
                     [&socket, message = messageOf(request, method, body)] { socket.write(message); });
    QObject::connect(&socket, &QSslSocket::readyRead, &socket, take);
    QObject::connect(&socket, &QSslSocket::errorOccurred, &socket, end);
    socket.setSslConfiguration(request.sslConfiguration());
    socket.setProtocolTag(url.scheme()); // the system's proxies are chosen by it
    if (secure)
        socket.connectToHostEncrypted(host, port);
    else
        socket.connectToHost(host, port);

    QElapsedTimer sinceAsked;
    sinceAsked.start();
    const QFuture<void> ended = promise.future();
    bool inTime = false;
    while (!inTime && !sinceAsked.hasExpired(limit.count())) { // the waiting may end a little early
        const std::chrono::milliseconds left = limit - std::chrono::milliseconds(sinceAsked.elapsed());
        inTime = co_await Async::finishesWithin(ended, std::max(left, std::chrono::milliseconds(1)));
    }
    if (!inTime && sinceAsked.hasExpired((limit + Http::graceAfterSleep).count()))
        inTime = co_await Async::finishesWithin(ended, Http::graceAfterSleep);
    socket.disconnect(); // what it reports from here on does not count
    if (!inTime)
        throw NetworkError(Http::lateAnswer);
    switch (state) {
    case HttpAnswerReader::State::complete:
        co_return HttpAnswer{reader.status(), reader.body()};
    case HttpAnswerReader::State::tooLarge:
        throw NetworkError(Http::largeAnswer);
    case HttpAnswerReader::State::broken:
        throw NetworkError(QStringLiteral("Die Antwort des Servers ist nicht lesbar."));
    case HttpAnswerReader::State::incomplete:
        break;
    }
    throw NetworkError(socket.errorString());
}
