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
