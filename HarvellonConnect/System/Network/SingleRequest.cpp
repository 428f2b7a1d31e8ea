#include "System/Network/SingleRequest.h"

#include "System/Async.h"
#include "System/Network/HttpAnswerReader.h"

#include <QElapsedTimer>
#include <QPromise>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTimer>

#include <algorithm>

namespace {
constexpr std::chrono::milliseconds fallbackAfter{1000};

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
    // A socket tries the addresses of a name one after the other and waits 30 s for each; IPv6 leads nowhere
    // behind some tunnels. So a second one tries IPv4 beside it; the first that is connected sends.
    QSslSocket first;
    QSslSocket second;
    QSslSocket* used = nullptr;
    const auto take = [&] {
        state = reader.read(used->readAll());
        if (state != HttpAnswerReader::State::incomplete)
            promise.finish();
    };
    const auto send = [&, message = messageOf(request, method, body)](QSslSocket& socket, QSslSocket& other) {
        if (used != nullptr)
            return;
        used = &socket;
        other.disconnect();
        other.abort();
        socket.write(message);
    };
    const auto end = [&](QSslSocket& socket, const QSslSocket& other) {
        if (used == nullptr && other.state() != QAbstractSocket::UnconnectedState)
            return; // which may still succeed
        used = &socket;
        take();
        state = reader.end();
        promise.finish();
    };
    const auto begin = [&](QSslSocket& socket, QSslSocket& other,
                           QAbstractSocket::NetworkLayerProtocol over) {
        QObject::connect(&socket, secure ? &QSslSocket::encrypted : &QSslSocket::connected, &socket,
                         [&] { send(socket, other); });
        QObject::connect(&socket, &QSslSocket::readyRead, &socket, take);
        QObject::connect(&socket, &QSslSocket::errorOccurred, &socket, [&] { end(socket, other); });
        socket.setSslConfiguration(request.sslConfiguration());
        socket.setProtocolTag(url.scheme()); // the system's proxies are chosen by it
        if (secure)
            socket.connectToHostEncrypted(host, port, QIODevice::ReadWrite, over);
        else
            socket.connectToHost(host, port, QIODevice::ReadWrite, over);
    };
    begin(first, second, QAbstractSocket::AnyIPProtocol);
    QTimer::singleShot(fallbackAfter, &first, [&] {
        if (first.state() == QAbstractSocket::HostLookupState ||
            first.state() == QAbstractSocket::ConnectingState)
            begin(second, first, QAbstractSocket::IPv4Protocol);
    });

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
    first.disconnect(); // what they report from here on does not count
    second.disconnect();
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
    throw NetworkError(used->errorString());
}
