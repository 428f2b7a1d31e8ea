#include "StateFixture.h"

#include "support/Keyring.h"

#include <QFile>

#include <sys/inotify.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
const QString erika = u"8f14e45f-erika"_s;
const QString jonas = u"c9f0f895-jonas"_s;
const QString registry = u"AccountsRegistry"_s;
const QString service = u"com.harvellon.HarvellonConnect.oauth"_s;
} // namespace

/// The registry of accounts and their tokens, with slow and failing parts.
class TestAccounts : public StateFixture {
    Q_OBJECT

  private Q_SLOTS:

    void unreadableRegistryIsSetAside() {
        for (const QByteArray line :
             {"AccountsRegistry=\"[{\\\"id\\\":\"",                          // half
              "AccountsRegistry=[{\"id\":\"a\", \"displayName\":\"b\"}]"}) { // by hand
            m_state.reset();
            m_preferences.reset();
            QFile file(host().preferencesFile);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("[General]\n" + line + '\n') > 0);
            file.close();
            const QVariant before = QSettings(file.fileName(), QSettings::IniFormat).value(registry);
            start();
            signIn("erika");
            const QSettings after(file.fileName(), QSettings::IniFormat);
            QCOMPARE(after.value(u"AccountsRegistryUnreadable"_s), before);
            QVERIFY(after.value(registry).toByteArray().contains(erika.toUtf8()));
        }
        const int watch = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        ::inotify_add_watch(watch, QFile::encodeName(m_home->path()).constData(), IN_CREATE);
        m_state->parts().accounts.saveAccountsRegistry();
        QByteArray events(4096, '\0');
        QVERIFY(::read(watch, events.data(), events.size()) > 0);
        ::close(watch);
        QCOMPARE(events.count("preferences.ini."), 2); // the lock, and the one file
    }

    void loadUsesItsOwnAccountsTokenOnly() {
        signIn("erika");
        const QString tokens = host().privateFolder + u"/tokens.json"_s;
        QVERIFY(QFile::rename(tokens, tokens + u".away"_s)); // as a locked keyring looks
        start();
        QCOMPARE(m_state->parts().loading.connectionFailure(), u"Bitte einloggen."_s);
        QCOMPARE(m_state->accounts().size(), 1);
        m_identity = u"jonas"_s;
        await(m_state->parts().oauth.startLogin()); // its tokens are in use for no account yet
        load();
        QCOMPARE(m_state->parts().loading.connectionFailure(), u"Bitte einloggen."_s);
        QVERIFY(QFile::rename(tokens + u".away"_s, tokens));
        load();
        QCOMPARE(m_state->userProfile()->name, u"Erika Beispiel"_s);
    }

    void slowKeyring() {
        Keyring keyring;
        HostSystem host = this->host();
        host.usesKeyring = true;
        start(host);
        signIn("erika");
        signIn("jonas");

        // A switch that is overtaken by another choice does nothing more, be it of the active account.
        auto& accounts = m_state->parts().accounts;
        const QString chosen = u"Account bereits vorhanden – wird aktiviert: Jonas Muster."_s;
        for (const bool signsIn : {false, true}) {
            keyring.freeze();
            auto first = accounts.switchAccount(erika);
            auto second = signsIn ? accounts.addAccount() : accounts.switchAccount(jonas);
            QTRY_COMPARE(messages().contains(chosen), signsIn);
            keyring.thaw();
            await(std::move(first));
            await(std::move(second));
            QCOMPARE(m_state->activeAccountID(), std::optional(jonas));
        }
        for (const QString& removed : {erika, jonas}) {
            signIn("erika");
            signIn("jonas");
            keyring.freeze();
            auto switching = accounts.switchAccount(erika);
            auto removing = accounts.removeAccount(removed);
            QTest::qWait(50);
            QCOMPARE(m_state->accounts().size(), 1);
            keyring.thaw();
            await(std::move(switching));
            await(std::move(removing));
        }
        QVERIFY(!messages().contains(u"Account gewechselt."_s));
        QVERIFY(messages().filter(u"fehlgeschlagen"_s).isEmpty());
        QTRY_COMPARE(m_state->userProfile().value_or(UserProfile()).name, u"Erika Beispiel"_s);

        // Cleaning up duplicates, which takes long, does not hold up the first load.
        QList<Account> listed{{erika, u"e@x.example"_s, u"E"_s}};
        for (int i = 0; i < 200; ++i)
            listed.append({u"older%1"_s.arg(i), u"E@x.example"_s, u"E"_s});
        const QString last = listed.last().id + u"-access-token"_s;
        m_keychain->save("alt", service, last);
        m_preferences->set({{registry, encodeAccounts(listed)}, {u"ActiveAccountID"_s, erika}});
        start(host);
        QCOMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(m_state->accounts().size(), 1);
        QVERIFY(m_preferences->data(registry)->contains("older"));
        QTRY_VERIFY(!m_preferences->data(registry)->contains("older"));
        QCOMPARE(m_keychain->load(service, last), std::nullopt);

        // Nor does storing the tokens of the older layout.
        m_preferences->set({{registry, {}}, {u"ActiveAccountID"_s, {}}});
        const sandbox::IssuedTokens tokens = m_platform->signIn(u"jonas"_s);
        m_keychain->save(tokens.accessToken.toUtf8(), service, u"access-token"_s);
        m_keychain->save(tokens.refreshToken.toUtf8(), service, u"refresh-token"_s);
        answer(Endpoint::directory, 0, std::chrono::seconds(1));
        QTimer::singleShot(500, this, [&keyring] { keyring.freeze(); }); // while the profile is asked for
        start(host);
        keyring.thaw();
        QCOMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(m_state->activeAccountID(), std::optional(u"name:Jonas Muster"_s));
        QVERIFY(messages().contains(u"Bestehende Anmeldung migriert."_s));
        QVERIFY(!m_preferences->data(registry));
        QTRY_VERIFY(m_preferences->data(registry));
        for (const QString& item : {u"access-token"_s, u"refresh-token"_s})
            QTRY_COMPARE(m_keychain->load(service, item), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestAccounts)
#include "tst_accounts.moc"
