#include "StateFixture.h"

#include "support/Keyring.h"

#include <QFile>

#include <array>
#include <sys/inotify.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
const QString erika = u"8f14e45f-erika"_s;
const QString jonas = u"c9f0f895-jonas"_s;
const QString registry = u"AccountsRegistry"_s;
const QString service = u"com.harvellon.HarvellonConnect.oauth"_s;
const QByteArray tokenPath = "/oauth/token";
} // namespace

/// The registry of accounts and their tokens, with slow and failing parts.
class TestAccounts : public StateFixture {
    Q_OBJECT

    [[nodiscard]] QString tokenFile() const { return host().privateFolder + u"/tokens.json"_s; }

    void setRegistry(const QByteArray& accounts, const QString& active) {
        m_preferences->set({{registry, accounts}, {u"ActiveAccountID"_s, active}});
    }

    [[nodiscard]] QStringList ids() const {
        QStringList ids;
        for (const Account& account : m_state->accounts())
            ids.append(account.id);
        return ids;
    }

  private Q_SLOTS:

    void unreadableRegistryIsSetAside_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("half") << QByteArray("AccountsRegistry=\"[{\\\"id\\\":\"");
        QTest::newRow("edited by hand")
            << QByteArray("AccountsRegistry=[{\"id\":\"a\", \"displayName\":\"b\"}]");
    }

    void unreadableRegistryIsSetAside() {
        QFETCH(QByteArray, line);
        m_state.reset();
        m_preferences.reset();
        QFile file(host().preferencesFile);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[General]\n" + line + '\n');
        file.close();
        const QVariant before = QSettings(file.fileName(), QSettings::IniFormat).value(registry);
        start();
        signIn("erika");
        const QSettings after(file.fileName(), QSettings::IniFormat);
        QCOMPARE(after.value(u"AccountsRegistryUnreadable"_s), before);
        QVERIFY(after.value(registry).toByteArray().contains(erika.toUtf8()));
    }

    void registryIsWrittenInOnePiece() {
        signIn("erika");
        const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        ::inotify_add_watch(watch, QFile::encodeName(m_home->path()).constData(), IN_CREATE);
        m_state->parts().accounts.saveAccountsRegistry();
        std::array<char, 4096> events{};
        const ssize_t size = ::read(watch, events.data(), events.size());
        ::close(watch);
        // The lock, and the one file that takes the place of the former.
        QCOMPARE(QByteArray(events.data(), size).count("preferences.ini."), 2);
    }

    void loadUsesItsOwnAccountsTokenOnly() {
        signIn("erika");
        QVERIFY(QFile::rename(tokenFile(), tokenFile() + u".away"_s)); // as a locked keyring looks
        m_identity = u"jonas"_s;
        await(m_state->parts().oauth.startLogin()); // its tokens are in use for no account yet
        await(m_state->parts().loading.refresh());
        QCOMPARE(m_state->parts().loading.connectionFailure(), u"Bitte einloggen."_s);
        QVERIFY(QFile::rename(tokenFile() + u".away"_s, tokenFile()));
        await(m_state->parts().loading.refresh());
        QCOMPARE(m_state->userProfile()->name, u"Erika Beispiel"_s);
    }

    void removalIsToldBeforeTheReload() {
        signIn("erika");
        signIn("jonas");
        m_state->activityLog()->clear();
        await(m_state->parts().accounts.removeAccount(jonas));
        QTRY_COMPARE(messages().size(), 3);
        QCOMPARE(messages().first(), u"Account entfernt."_s);
        QCOMPARE(messages().last(), u"Verbunden als Erika Beispiel. 12 Projekte geladen."_s);
    }

    void noRenewalStartsWhileTheProgramEnds() {
        signIn("erika");
        m_platform->expireTokens();
        const qsizetype renewals = m_platform->requests(tokenPath).size();
        Fault slow;
        slow.delay = std::chrono::milliseconds(150);
        m_platform->setFault(Endpoint::directory, slow);
        auto loading = m_state->parts().loading.refresh();
        await(m_state->shutDown());
        await(std::move(loading));
        QCOMPARE(m_platform->requests(tokenPath).size(), renewals);
    }

    void unsavedTokensAreSavedAtTheNextReload() {
        const QString folder = host().privateFolder;
        QVERIFY(QDir().mkpath(QFileInfo(folder).path()));
        QFile blocker(folder); // a file in the place of the folder: nothing can be stored
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        signIn("erika");
        QVERIFY(blocker.remove());
        await(m_state->parts().loading.refresh());
        QTRY_VERIFY(QFile::exists(tokenFile()));
        start();
        QCOMPARE(m_state->connectionStatus(), Status::success);
    }

    void slowKeyring() {
        Keyring keyring;
        HostSystem host = this->host();
        host.usesKeyring = true;
        start(host);
        signIn("erika");
        signIn("jonas");

        // A switch that is overtaken by another choice does nothing more.
        keyring.freeze();
        auto switching = m_state->parts().accounts.switchAccount(erika);
        auto removing = m_state->parts().accounts.removeAccount(jonas);
        QTest::qWait(50);
        QCOMPARE(ids(), QStringList{erika});
        keyring.thaw();
        await(std::move(switching));
        await(std::move(removing));
        QVERIFY(!messages().contains(u"Account gewechselt."_s));
        QTRY_COMPARE(m_state->userProfile().value_or(UserProfile()).name, u"Erika Beispiel"_s);

        // Cleaning up duplicates, which takes long, does not hold up the first load.
        QList<Account> accounts{{erika, u"e@x.example"_s, u"E"_s}};
        for (int i = 0; i < 200; ++i)
            accounts.append({u"older%1"_s.arg(i), u"E@x.example"_s, u"E"_s});
        const QString last = accounts.last().id + u"-access-token"_s;
        m_keychain->save("alt", service, last);
        setRegistry(encodeAccounts(accounts), erika);
        start(host);
        QCOMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(ids(), QStringList{erika});
        QVERIFY(m_preferences->data(registry)->contains("older"));
        QTRY_VERIFY(!m_preferences->data(registry)->contains("older"));
        QCOMPARE(m_keychain->load(service, last), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestAccounts)
#include "tst_accounts.moc"
