#include "Updates/UpdateController.h"
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

    void initTestCase() {
        m_site = std::make_unique<sandbox::Sites>(m_folder.path(), m_answers);
        QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
        trusting.setCaCertificates(QSslCertificate::fromPath(m_site->certificate()));
        QSslConfiguration::setDefaultConfiguration(trusting);
    }

    void whoAsksIsTold_data() {
        QTest::addColumn<QByteArray>("items");
        QTest::addColumn<QString>("told");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("scheme");
        const auto row = [](const char* name, const QByteArray& items, const QString& told, int status = 200,
                            const QString& scheme = u"https"_s) {
            QTest::newRow(name) << items << told << status << scheme;
        };
        const auto item = [](const QByteArray& version, const QByteArray& address) {
            return "<item><sparkle:shortVersionString>" + version + "</sparkle:shortVersionString><link>" +
                   address + "</link></item>";
        };
        const QByteArray newer = item("1.10.1", "https://x.example/2");
        const QString none = u"Harvellon Connect ist auf dem neuesten Stand."_s;
        const QString unreachable = u"Die Liste der Versionen ist gerade nicht erreichbar."_s;
        row("newest of several",
            item("1.2", "https://x.example/1") + newer + item("1.9", "https://x.example/3"),
            u"Version 1.10.1 ist verfügbar: https://x.example/2"_s);
        row("attributes",
            "<item><enclosure url='https://x.example/a' sparkle:shortVersionString='2.0'/></item>",
            u"Version 2.0 ist verfügbar: https://x.example/a"_s);
        row("the same", item("1.0.0", "https://x.example/1"), none);
        row("plain http", item("2.0", "http://x.example/1"), none);
        row("no version", item("neu", "https://x.example/1"), none);
        row("broken off", newer + "<item>", none);
        row("gone", newer, unreachable, 404);
        row("not encrypted", newer, unreachable, 200, u"http"_s);
    }

    void whoAsksIsTold() {
        QFETCH(QByteArray, items);
        QFETCH(QString, told);
        QFETCH(int, status);
        QFETCH(QString, scheme);
        const QByteArray feed =
            "<rss xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle'><channel>" + items +
            "</channel></rss>";
        m_answers.set(sandbox::Endpoint::site, {.status = status, .body = feed});
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
