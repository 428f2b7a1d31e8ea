#include "LoginFixture.h"

#include <QElapsedTimer>
#include <QNetworkReply>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTimer>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

namespace {
QString valueIn(const QUrl& url, const QString& name) {
    return QUrlQuery(url).queryItemValue(name, QUrl::FullyDecoded);
}
} // namespace

/// From the first click to tokens.
class TestLogin : public LoginFixture {
    Q_OBJECT

    /// A browser that has chosen `parameters` on the sign-in page.
    QNetworkReply* browse(const QUrl& address, const QString& parameters) {
        return m_network.get(QNetworkRequest(QUrl(address.toString(QUrl::FullyEncoded) + parameters)));
    }

    /// A request straight to the listener; returns all that it answers.
    static QByteArray callBack(const QUrl& address, const QByteArray& target) {
        const QUrl redirect(valueIn(address, u"redirect_uri"_s));
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(redirect.port()));
        socket.write("GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
        QByteArray answer;
        const bool ended = QTest::qWaitFor([&] {
            answer += socket.readAll();
            return socket.state() == QAbstractSocket::UnconnectedState;
        });
        return ended ? answer + socket.readAll() : "still open";
    }

    QString loginFailure() {
        try {
            await(m_oauth->startLogin());
        } catch (const Failure& error) {
            return error.description();
        }
        return u"none"_s;
    }

  private Q_SLOTS:

    void loginYieldsTokensAndWhoTheyBelongTo() {
        QUrl asked;
        QNetworkReply* page = nullptr;
        m_browser = [&](const QUrl& address) {
            asked = address;
            page = browse(address, u"&identity=erika"_s);
        };
        const AuthResult result = await(m_oauth->startLogin());
        QCOMPARE(result.accountID, std::optional(account));
        QCOMPARE(result.email, std::optional(u"erika@beispiel-shop.example"_s));
        QCOMPARE(result.displayName, std::optional(u"Erika Beispiel"_s));
        QVERIFY(result.refreshToken.has_value());
        QCOMPARE(m_oauth->accessToken(), std::optional(result.accessToken));
        QVERIFY(!m_oauth->isAuthenticating());
        QVERIFY(asked.query(QUrl::FullyEncoded)
                    .startsWith(u"client_id=018f4c2a-7b3d-7e91-a5c6-2d8e0f1b3a47&redirect_uri="_s));
        QCOMPARE(valueIn(asked, u"scope"_s), u"openid profile email"_s);
        QCOMPARE(valueIn(asked, u"state"_s).size(), 43);
        QVERIFY(!stored("-access-token")); // storing is the caller's step
        QTRY_VERIFY(page->isFinished());   // as a whole, though the port is closed
        QCOMPARE(page->error(), QNetworkReply::NoError);
        const QByteArray text = page->readAll();
        for (const char* told : {"Login erfolgreich", "Du bist jetzt mit Harvellon Connect verbunden.",
                                 "Authentifiziert", "Du kannst diesen Tab jetzt schliessen.", "</html>"})
            QVERIFY2(text.contains(told), told);
    }

    void badCallbacks_data() {
        QTest::addColumn<QByteArray>("target"); // %S stands for the right state
        QTest::addColumn<QString>("failure");
        const QString state = u"Sicherheitspruefung fehlgeschlagen (State stimmt nicht ueberein)."_s;
        const QString code = u"Kein Authorization Code vom Server erhalten."_s;
        QTest::newRow("wrong state") << QByteArray("/callback?code=abc&state=WRONG") << state;
        QTest::newRow("refused by the user") << QByteArray("/callback?error=access_denied&state=%S") << code;
        QTest::newRow("invented code")
            << QByteArray("/any/path?code=abc&state=%S") << u"Token-Austausch fehlgeschlagen: HTTP 400"_s;
    }

    void badCallbacks() {
        QFETCH(QByteArray, target);
        QFETCH(QString, failure);
        QByteArray answer;
        QUrl asked;
        m_browser = [&](const QUrl& address) {
            asked = address;
            target.replace("%S", valueIn(address, u"state"_s).toUtf8());
            QTimer::singleShot(0, this, [&] { answer = callBack(asked, target); });
        };
        QCOMPARE(loginFailure(), failure);
        QTRY_VERIFY(answer.contains("Login erfolgreich")); // the tab shows the page in any case
        QVERIFY(!m_oauth->isAuthenticating());
        QCOMPARE(m_oauth->authError(), std::optional(failure));
        QCOMPARE(callBack(asked, target), QByteArray()); // the port is closed
    }

    void secondLoginIsRefusedAndLeavesTheFirstAlone() {
        QUrl asked;
        m_browser = [&asked](const QUrl& address) { asked = address; };
        auto first = m_oauth->startLogin();
        QTRY_VERIFY(!asked.isEmpty());
        QCOMPARE(loginFailure(), u"Login laeuft bereits."_s);
        QVERIFY(m_oauth->isAuthenticating());
        browse(asked, u"&identity=jonas"_s);
        QCOMPARE(await(std::move(first)).displayName, std::optional(u"Jonas Muster"_s));
    }

    void connectionsWithoutDataCountForNothing() {
        QTcpSocket early;
        m_browser = [&](const QUrl& address) {
            early.connectToHost(QHostAddress::LocalHost,
                                static_cast<quint16>(QUrl(valueIn(address, u"redirect_uri"_s)).port()));
            QVERIFY(early.waitForConnected());
            early.disconnectFromHost();
            browse(address, u"&identity=erika"_s);
        };
        QCOMPARE(await(m_oauth->startLogin()).accountID, std::optional(account));
    }

    void cancelledLoginEndsAtOnce() {
        m_browser = [this](const QUrl&) {
            QTimer::singleShot(10, m_oauth.get(), &OAuthManager::cancelLogin);
        };
        QCOMPARE(loginFailure(), u"Callback-Server fehlgeschlagen: Listener abgebrochen."_s);
    }

    void realBrowserShowsTheWholePage() {
        const QString chromium = u"/usr/bin/chromium"_s;
        QProcess browser;
        QTemporaryDir profile;
        m_browser = [&](const QUrl& address) {
            browser.start(chromium,
                          {u"--headless"_s, u"--no-sandbox"_s, u"--disable-gpu"_s, u"--no-first-run"_s,
                           u"--disable-background-networking"_s, u"--disable-component-update"_s,
                           u"--disable-sync"_s, u"--password-store=basic"_s,
                           u"--user-data-dir="_s + profile.path(), u"--dump-dom"_s,
                           address.toString(QUrl::FullyEncoded) + u"&identity=erika"_s});
        };
        QCOMPARE(await(m_oauth->startLogin()).accountID, std::optional(account));
        QTRY_COMPARE_WITH_TIMEOUT(browser.state(), QProcess::NotRunning, 20000);
        const QString page = QString::fromUtf8(browser.readAllStandardOutput());
        for (const char* text : {"Login erfolgreich", "Du bist jetzt mit Harvellon Connect verbunden.",
                                 "Authentifiziert", "Du kannst diesen Tab jetzt schliessen."})
            QVERIFY2(page.contains(QString::fromUtf8(text)), text);
    }

    void aBrowserThatStaysSilentEndsTheLogin() {
        QUrl asked;
        m_browser = [&asked](const QUrl& address) { asked = address; };
        makeManager({.login = std::chrono::milliseconds(300)});
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(loginFailure(), u"Login-Timeout: Keine Antwort vom Browser erhalten."_s);
        QVERIFY(timer.elapsed() >= 280);
        QCOMPARE(callBack(asked, "/callback"), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestLogin)
#include "tst_login.moc"
