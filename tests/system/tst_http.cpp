#include "System/Network/Http.h"
#include "sandbox/Sites.h"

#include "support/Await.h"
#include "support/ReadOnlyMount.h"

#include <QNetworkAccessManager>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <sys/socket.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
enum class Then { keepsOpen, closes, resets };

/// Gives each connection the same answer, and keeps what was asked.
class Server {
  public:
    Server(const QByteArray& body, const QByteArray& answer, Then then) {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [=, this] {
            QTcpSocket* socket = m_server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [=, this] {
                asked += socket->readAll();
                if (!asked.endsWith("\r\n\r\n" + body))
                    return;
                socket->write(answer);
                socket->flush();
                const linger now{1, 0};
                if (then == Then::resets)
                    ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
                if (then != Then::keepsOpen)
                    then == Then::resets ? socket->abort() : socket->disconnectFromHost();
            });
        });
    }

    [[nodiscard]] QUrl address() const {
        return QUrl(u"http://127.0.0.1:%1/oauth/token?x=%25"_s.arg(m_server.serverPort()));
    }

    QByteArray asked;

  private:
    QTcpServer m_server;
};

QByteArray post(const QUrl& url, const QByteArray& body, std::chrono::milliseconds limit = 700ms) {
    QNetworkAccessManager network;
    QNetworkRequest request(url);
    request.setRawHeader("Authorization", "Bearer a\r\nX-Forged: b");
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/x-www-form-urlencoded"));
    try {
        const HttpAnswer answer = await(Http::exchange(network, request, "POST", body, limit, 100));
        return QByteArray::number(answer.status) + ' ' + answer.body;
    } catch (const NetworkError& error) {
        return error.description().isEmpty() ? "" : "no answer";
    }
}
} // namespace

/// What is sent with POST, and how often, whatever the server does.
class TestHttp : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void isSentOnce_data() {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("then");
        QTest::addColumn<QByteArray>("outcome");
        const auto row = [](const char* name, const QByteArray& answer, Then then,
                            const QByteArray& outcome) {
            QTest::newRow(name) << answer << int(then) << outcome;
        };
        const QByteArray none = "no answer";
        const QByteArray ok = "HTTP/1.1 200 OK\r\n";
        row("reset", "", Then::resets, none);
        row("closed without an answer", "", Then::closes, none);
        row("garbage", "garbage", Then::keepsOpen, none);
        row("head without an end", ok + QByteArray(100'000, 'x'), Then::keepsOpen, none);
        row("half of the body", ok + "Content-Length: 4\r\n\r\nab", Then::closes, none);
        row("beyond the limit", ok + "\r\n" + QByteArray(200, 'x'), Then::closes, none);
        row("announced beyond the limit", ok + "Content-Length: 101\r\n\r\n", Then::keepsOpen, none);
        row("two lengths", ok + "Content-Length: 2\r\nContent-Length: 3\r\n\r\nabc", Then::closes, none);
        row("negative length", ok + "Content-Length: -2\r\n\r\nabc", Then::closes, none);
        const QByteArray chunks = ok + "Transfer-Encoding: Chunked\r\n\r\n";
        row("chunk beyond the limit", chunks + "7fffffffffffffff\r\n", Then::keepsOpen, none);
        row("chunk without an end", chunks + "2\r\nabcd\r\n", Then::keepsOpen, none);
        row("informed before", "HTTP/1.1 103 Early Hints\r\n\r\n" + ok + "Content-Length: 0\r\n\r\n",
            Then::keepsOpen, "200 ");
        row("length", ok + "content-length:  4\r\n\r\nabcdefg", Then::keepsOpen, "200 abcd");
        row("until the end", ok + "\r\nabcd", Then::closes, "200 abcd");
        row("chunks", chunks + "2;x=y\r\nab\r\n02\r\ncd\r\n0\r\nX: y\r\n\r\n", Then::keepsOpen, "200 abcd");
        row("nothing to come", "HTTP/1.1 204 No Content\r\n\r\n", Then::keepsOpen, "204 ");
    }

    void isSentOnce() {
        QFETCH(QByteArray, answer);
        QFETCH(int, then);
        QFETCH(QByteArray, outcome);
        for (const QByteArray& body : {QByteArray("a=b"), QByteArray()}) {
            const Server server(body, answer, Then(then));
            QCOMPARE(post(server.address(), body), outcome);
            QTest::qWait(100); // for a request too many
            QCOMPARE(server.asked.count("POST "), 1);
            QVERIFY(server.asked.startsWith("POST /oauth/token?x=%25 HTTP/1.1\r\n"));
            QVERIFY(server.asked.contains("\r\nContent-Type: application/x-www-form-urlencoded\r\n"));
            QVERIFY(server.asked.contains(
                "\r\nHost: 127.0.0.1:" + QByteArray::number(server.address().port()) + "\r\n"));
            QVERIFY(!server.asked.contains("\r\nX-Forged"));
        }
    }

    void addressThatLeadsNowhereIsPassedOver() {
        QTemporaryFile hosts;
        QVERIFY(hosts.open() && hosts.write("127.0.0.1 localhost two.example\n::1 two.example\n") > 0);
        hosts.close();
        if (!mountReadOnly(hosts.fileName().toUtf8(), "/etc/hosts"))
            QSKIP("this user may not mount");
        const Server server("a=b", "HTTP/1.1 204 No Content\r\n\r\n", Then::keepsOpen);
        QUrl address = server.address();
        QTcpServer silent; // its one place is taken
        silent.setListenBacklogSize(0);
        QVERIFY(silent.listen(QHostAddress::LocalHostIPv6, static_cast<quint16>(address.port())));
        silent.pauseAccepting();
        QTcpSocket guest;
        guest.connectToHost(QHostAddress::LocalHostIPv6, silent.serverPort());
        QVERIFY(guest.waitForConnected());
        address.setHost(u"two.example"_s);
        QCOMPARE(post(address, "a=b", 5s), "204 ");
        QCOMPARE(server.asked.count("POST "), 1);
    }

    void certificatesCount() {
        const QTemporaryDir folder;
        sandbox::Faults faults;
        const sandbox::Sites sites(folder.path(), faults);
        const QUrl address(u"https://localhost:%1/"_s.arg(sites.port()));
        QCOMPARE(post(address, ""), "no answer");
        QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
        trusting.setCaCertificates(QSslCertificate::fromPath(sites.certificate()));
        QSslConfiguration::setDefaultConfiguration(trusting);
        QCOMPARE(post(address, ""), "404 "); // the sites know no POST
    }
};

QTEST_GUILESS_MAIN(TestHttp)
#include "tst_http.moc"
