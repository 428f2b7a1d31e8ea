#include "Updates/UpdateController.h"
#include "Updates/UpdateFeed.h"
#include "sandbox/Sites.h"

#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

/// The feed over https, from the question to what the user is told.
class TestUpdates : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    sandbox::Faults m_answers;
    std::unique_ptr<sandbox::Sites> m_site;

  private Q_SLOTS:

    void feeds_data() {
        QTest::addColumn<QByteArray>("items");
        QTest::addColumn<QString>("version");
        const auto item = [](const char* version, const char* address) {
            return QByteArray("<item><sparkle:shortVersionString>") + version +
                   "</sparkle:shortVersionString><link>" + address + "</link></item>";
        };
        QTest::newRow("newest of several")
            << item("1.2", "https://x.example/1") + item("1.10.1", "https://x.example/2") +
                   item("1.9", "https://x.example/3")
            << u"1.10.1"_s;
        QTest::newRow("attributes") << QByteArray("<item><enclosure url='https://x.example/a' "
                                                  "sparkle:shortVersionString='2.0'/></item>")
                                    << u"2.0"_s;
        QTest::newRow("the same") << item("1.0.0", "https://x.example/1") << QString();
        QTest::newRow("plain http") << item("2.0", "http://x.example/1") << QString();
        QTest::newRow("no version") << item("neu", "https://x.example/1") << QString();
        QTest::newRow("broken off") << item("2.0", "https://x.example/1") + "<item>" << QString();
        QTest::newRow("another page") << QByteArray("</channel></rss><html>") << QString();
    }

    void feeds() {
        QFETCH(QByteArray, items);
        QFETCH(QString, version);
        const QByteArray feed =
            "<rss xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle'><channel>" + items +
            "</channel></rss>";
        const std::optional<Release> release = newerRelease(feed, u"1.0.0"_s);
        QCOMPARE(release ? release->version : QString(), version);
    }

    void initTestCase() {
        m_site = std::make_unique<sandbox::Sites>(m_folder.path(), m_answers);
        QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
        trusting.setCaCertificates(QSslCertificate::fromPath(m_site->certificate()));
        QSslConfiguration::setDefaultConfiguration(trusting);
    }

    void whoAsksIsTold_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("version");
        QTest::addColumn<QString>("scheme");
        QTest::addColumn<QString>("told");
        const QString unreachable = u"Die Liste der Versionen ist gerade nicht erreichbar."_s;
        QTest::newRow("newer") << 200 << QByteArray("1.1") << u"https"_s
                               << u"Version 1.1 ist verfügbar: https://x.example/1.1"_s;
        QTest::newRow("same") << 200 << QByteArray("1.0.0") << u"https"_s
                              << u"Harvellon Connect ist auf dem neuesten Stand."_s;
        QTest::newRow("gone") << 404 << QByteArray("1.1") << u"https"_s << unreachable;
        QTest::newRow("not encrypted") << 200 << QByteArray("1.1") << u"http"_s << unreachable;
    }

    void whoAsksIsTold() {
        QFETCH(int, status);
        QFETCH(QByteArray, version);
        QFETCH(QString, scheme);
        QFETCH(QString, told);
        sandbox::Fault answer;
        answer.status = status;
        answer.body =
            "<rss xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle'><channel><item>"
            "<sparkle:shortVersionString>" +
            version + "</sparkle:shortVersionString><link>https://x.example/" + version +
            "</link></item></channel></rss>";
        m_answers.set(sandbox::Endpoint::site, answer);
        QNetworkAccessManager network;
        UpdateController updates(u"%1://127.0.0.1:%2/feed.xml"_s.arg(scheme).arg(m_site->port()), u"1.0.0"_s,
                                 network);
        const QSignalSpy spy(&updates, &UpdateController::announced);
        updates.checkForUpdates();
        QTRY_COMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0).at(1).toString(), told);
    }
};

QTEST_GUILESS_MAIN(TestUpdates)
#include "tst_updates.moc"
