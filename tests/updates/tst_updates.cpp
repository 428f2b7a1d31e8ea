#include "System/Preferences.h"
#include "Updates/UpdateController.h"
#include "sandbox/Sites.h"

#include <QNetworkAccessManager>
#include <QProcess>
#include <QSignalSpy>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

/// The signed feed over https, from the question to what the user is told.
class TestUpdates : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    sandbox::Faults m_answers;
    std::unique_ptr<sandbox::Sites> m_site;
    QString m_key;
    UpdateSource m_source;

    static QByteArray output(const QString& program, const QStringList& arguments) {
        QProcess process;
        process.start(program, arguments);
        if (!process.waitForFinished() || process.exitCode() != 0)
            qFatal("%s: %s", qPrintable(program), process.readAllStandardError().constData());
        return process.readAllStandardOutput();
    }

    [[nodiscard]] QString write(const QString& name, const QByteArray& content) const {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(content) >= 0 ? file.fileName() : QString();
    }

    [[nodiscard]] QString newKey(const QString& name) const {
        return write(name, output(u"openssl"_s, {u"genpkey"_s, u"-algorithm"_s, u"ed25519"_s}));
    }

    /// `issued` and `expires` in seconds from now.
    [[nodiscard]] QByteArray signedFeed(const QByteArray& items, int issued, int expires,
                                        const QString& key) const {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        const QString dates = u"<h:issued>%1</h:issued><h:expires>%2</h:expires>"_s.arg(
            now.addSecs(issued).toString(Qt::ISODate), now.addSecs(expires).toString(Qt::ISODate));
        const QByteArray feed =
            "<rss xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle' xmlns:h='h'><channel>" +
            dates.toUtf8() + items + "</channel></rss>\n";
        const QByteArray signature = output(u"openssl"_s, {u"pkeyutl"_s, u"-sign"_s, u"-rawin"_s, u"-inkey"_s,
                                                           key, u"-in"_s, write(u"feed"_s, feed)});
        return feed + "<!-- signature " + signature.toBase64() + " -->\n";
    }

    [[nodiscard]] QByteArray good(const QByteArray& items) const { return signedFeed(items, -9, 900, m_key); }

    /// What a user is told who asks, with that feed on the server.
    [[nodiscard]] QString told(const QByteArray& feed, const UpdateSource& source, int status = 200) {
        m_answers.set(sandbox::Endpoint::site, {.status = status, .body = feed});
        QNetworkAccessManager network;
        Preferences preferences(m_folder.filePath(u"preferences.ini"_s));
        UpdateController updates(source, preferences, network);
        QSignalSpy spy(&updates, &UpdateController::announced);
        updates.checkForUpdates();
        return spy.isEmpty() && !spy.wait() ? QString() : spy.at(0).at(1).toString();
    }

  private Q_SLOTS:

    void initTestCase() {
        m_site = std::make_unique<sandbox::Sites>(m_folder.path(), m_answers);
        QSslConfiguration trusting = QSslConfiguration::defaultConfiguration();
        trusting.setCaCertificates(QSslCertificate::fromPath(m_site->certificate()));
        QSslConfiguration::setDefaultConfiguration(trusting);
        m_key = newKey(u"key.pem"_s);
        m_source = {u"https://127.0.0.1:%1/feed.xml"_s.arg(m_site->port()),
                    output(QStringLiteral(SIGN_FEED), {m_key}).trimmed(), u"1.0.0"_s};
    }

    void whoAsksIsTold() {
        const auto item = [](const QByteArray& version, const QByteArray& address) {
            return "<item><sparkle:shortVersionString>" + version + "</sparkle:shortVersionString><link>" +
                   address + "</link></item>";
        };
        const QByteArray newer = item("1.10.1", "https://x.example/2");
        const QByteArray feed = good(newer);
        const QString list = u"Die Liste der Versionen ist "_s;
        const QString unreadable = list + u"nicht lesbar."_s;
        QList<std::pair<QByteArray, QString>> cases = {
            {good(item("1.2", "https://x.example/1") + newer + item("1.9", "https://x.example/3")),
             u"Version 1.10.1 ist verfügbar: https://x.example/2"_s},
            {good("<item><enclosure url='https://x.example/a' sparkle:shortVersionString='2.0'/></item>"),
             u"Version 2.0 ist verfügbar: https://x.example/a"_s},
            {good(item("1.0.0", "https://x.example/1") + item("2.0", "http://x.example/1") +
                  item("neu", "https://x.example/1")),
             u"Harvellon Connect ist auf dem neuesten Stand."_s},
            {good(newer + "<item>"), unreadable},
            {good(newer + "<h:expires>nie</h:expires>"), unreadable},
            {good(newer + "<h:issued>2026-01-01T00:00:00</h:issued>"), unreadable},
            {signedFeed(newer, -1, 0, m_key), list + u"abgelaufen."_s},
            {signedFeed(newer, 2 * 86400, 3 * 86400, m_key), list + u"neuer als die Uhr dieses Rechners."_s},
            {signedFeed(newer, -60, 900, m_key), list + u"älter als die zuletzt gelesene."_s}};
        for (const QByteArray& forged :
             {signedFeed(newer, -9, 900, newKey(u"other.pem"_s)),
              QByteArray(feed).replace("1.10.1", "1.10.2"), feed + "<!-- -->\n", feed.chopped(9) + " -->\n",
              feed.left(feed.lastIndexOf("<!--")), QByteArray("\n<!-- signature  -->\n"), QByteArray(" ")})
            cases.append({forged, list + u"nicht echt und wird nicht verwendet."_s});
        for (const auto& [served, expected] : cases) {
            if (expected.startsWith(list))
                QTest::ignoreMessage(QtWarningMsg, ("feed not used: " + expected.toUtf8()).constData());
            QCOMPARE(told(served, m_source), expected);
        }
    }

    void someFeedsAreNotEvenRead() {
        const QString unreachable = u"Die Liste der Versionen ist gerade nicht erreichbar."_s;
        const auto [address, key, version, allowed] = m_source;
        QCOMPARE(told(good({}), m_source, 404), unreachable);
        QCOMPARE(told(good({}), {u"http"_s + address.mid(5), key, version}), unreachable);
        QCOMPARE(told(good({}), {address, {}, version}), u"Diese Version sucht nicht selbst nach Updates."_s);
        QCOMPARE(told(good({}), {address, key, version, false}), updatesForbidden);
    }

    void theFeedOfAPackageIsBelieved() {
        const QString script = QStringLiteral(SIGN_FEED);
        const QStringList arguments{m_key, m_folder.path(), write(u"a_1.deb"_s, "deb")};
        const QByteArray cache =
            "CMAKE_PROJECT_VERSION:STATIC=1.2.0\nHARVELLON_UPDATE_FEED:STRING=https://x.example/u/"
            "cast.xml\nHARVELLON_FEED_KEY:STRING=";
        QVERIFY(!write(u"CMakeCache.txt"_s, cache).isEmpty() && QProcess::execute(script, arguments) != 0);
        QVERIFY(!write(u"CMakeCache.txt"_s, cache + m_source.key + '\n').isEmpty());
        QFile feed(QString::fromUtf8(output(script, arguments).trimmed()));
        QVERIFY(feed.open(QIODevice::ReadOnly));
        QCOMPARE(told(feed.readAll(), m_source),
                 u"Version 1.2.0 ist verfügbar: https://x.example/u/a_1.deb"_s);
    }
};

QTEST_GUILESS_MAIN(TestUpdates)
#include "tst_updates.moc"
