#include "LoginFixture.h"

#include "support/Keyring.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace {
const QByteArray tokenPath = "/oauth/token";
}

/// The newest tokens stay in use and stored, whatever is slow or fails meanwhile.
class TestTokens : public LoginFixture {
    Q_OBJECT

    Keyring m_keyring;

    sandbox::IssuedTokens signIn() {
        sandbox::IssuedTokens tokens = m_platform->signIn(u"erika"_s);
        await(m_oauth->saveTokens(tokens.accessToken, tokens.refreshToken, account));
        return tokens;
    }

    void inUseAndStored(const sandbox::IssuedTokens& tokens) {
        QCOMPARE(m_oauth->accessToken(), std::optional(tokens.accessToken));
        QCOMPARE(m_oauth->refreshToken(), std::optional(tokens.refreshToken));
        QCOMPARE(stored("-access-token"), std::optional(tokens.accessToken.toUtf8()));
        QCOMPARE(stored("-refresh-token"), std::optional(tokens.refreshToken.toUtf8()));
    }

  private Q_SLOTS:

    void slowKeyringBringsNoOldTokensBack() {
        useKeyring();
        signIn();
        makeManager({}); // the next start
        m_keyring.freeze();
        QCoro::Task<bool> loading = m_oauth->loadTokens(account);
        const sandbox::IssuedTokens tokens = m_platform->signIn(u"erika"_s);
        QCoro::Task<bool> saving = m_oauth->saveTokens(tokens.accessToken, tokens.refreshToken, account);
        QTest::qWait(100);
        m_keyring.thaw();
        QVERIFY(await(std::move(loading)));
        QVERIFY(await(std::move(saving)));
        inUseAndStored(tokens);
    }

    void savesAreStoredInTheirOrder() {
        useKeyring();
        m_keyring.freeze();
        std::vector<QCoro::Task<bool>> saving;
        sandbox::IssuedTokens tokens;
        for (int i = 0; i < 20; ++i) {
            tokens = m_platform->signIn(u"erika"_s);
            saving.push_back(m_oauth->saveTokens(tokens.accessToken, tokens.refreshToken, account));
        }
        m_keyring.thaw();
        for (QCoro::Task<bool>& one : saving)
            await(std::move(one));
        inUseAndStored(tokens);
    }

    void lateEndOfARenewalLeavesNewerTokensAlone_data() {
        QTest::addColumn<int>("status");
        QTest::newRow("refused") << 400;
        QTest::newRow("renewed") << 0;
    }

    void lateEndOfARenewalLeavesNewerTokensAlone() {
        QFETCH(int, status);
        signIn();
        Fault slow;
        slow.delay = std::chrono::milliseconds(200);
        slow.status = status;
        m_platform->setFault(Endpoint::token, slow);
        auto renewal = m_oauth->renewTokens(*m_oauth->accessToken());
        const sandbox::IssuedTokens tokens = signIn();
        await(std::move(renewal));
        inUseAndStored(tokens);
    }

    void removedAccountStaysRemovedWhenItsRenewalEnds() {
        signIn();
        Fault slow;
        slow.delay = std::chrono::milliseconds(200);
        m_platform->setFault(Endpoint::token, slow);
        auto renewal = m_oauth->renewTokens(*m_oauth->accessToken());
        await(m_oauth->removeTokens(account));
        await(std::move(renewal));
        QCOMPARE(m_oauth->accessToken(), std::nullopt);
        QCOMPARE(stored("-access-token"), std::nullopt);
        QCOMPARE(stored("-refresh-token"), std::nullopt);
    }

    void callThatNobodyAwaitsAnyLongerOwnsTheKeyring() {
        useKeyring();
        m_keyring.freeze(); // as one whose dialog is open
        QCoro::Task<bool> saving = m_oauth->saveTokens(u"spät"_s, std::nullopt, account);
        const std::weak_ptr<KeychainStore> keychain = m_keychain;
        m_oauth.reset();
        m_keychain.reset();
        QTest::qWait(50);
        QVERIFY(!keychain.expired());
        m_keyring.thaw();
        QTRY_VERIFY(keychain.expired());
        useKeyring();
        QCOMPARE(stored("-access-token"), std::optional(QByteArray("sp\xc3\xa4t")));
    }

    void tokensOfALockedKeyringAreSavedOnceItIsOpen() {
        useKeyring();
        signIn();
        m_keyring.kill();
        m_keyring.start(true);
        QSignalSpy failed(m_oauth.get(), &OAuthManager::storingFailed);
        const sandbox::IssuedTokens tokens = signIn();
        QCOMPARE(failed.size(), 1);
        QVERIFY(await(m_oauth->loadTokens(account)));
        await(m_oauth->storeUnsaved());
        m_keyring.kill();
        m_keyring.start();
        await(m_oauth->storeUnsaved());
        inUseAndStored(tokens);
    }

    void unsavedTokensStayInUseAndAreSavedLater() {
        const QString folder = hostIn(m_folder->path()).privateFolder;
        QVERIFY(QDir().mkpath(QFileInfo(folder).path()));
        QFile blocker(folder); // a file in the place of the folder: nothing can be stored
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        const sandbox::IssuedTokens tokens = signIn();
        await(m_oauth->saveTokens(u"another"_s, std::nullopt, u"another"_s));
        QVERIFY(await(m_oauth->loadTokens(account)));
        QCOMPARE(m_oauth->refreshToken(), std::optional(tokens.refreshToken));
        await(m_oauth->storeUnsaved());
        QVERIFY(blocker.remove());
        await(m_oauth->storeUnsaved());
        inUseAndStored(tokens);
    }
};

QTEST_GUILESS_MAIN(TestTokens)
#include "tst_tokens.moc"
