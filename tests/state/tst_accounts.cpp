#include "StateFixture.h"

#include "support/Keyring.h"

#include <QFile>

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
        keyring.freeze();
        auto first = m_state->parts().accounts.switchAccount(erika);
        await(m_state->parts().accounts.switchAccount(jonas));
        keyring.thaw();
        await(std::move(first));
        QCOMPARE(m_state->activeAccountID(), std::optional(jonas));
        keyring.freeze();
        auto switching = m_state->parts().accounts.switchAccount(erika);
        auto removing = m_state->parts().accounts.removeAccount(jonas);
        QTest::qWait(50);
        QCOMPARE(m_state->accounts().size(), 1);
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
        m_preferences->set({{registry, encodeAccounts(accounts)}, {u"ActiveAccountID"_s, erika}});
        start(host);
        QCOMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(m_state->accounts().size(), 1);
        QVERIFY(m_preferences->data(registry)->contains("older"));
        QTRY_VERIFY(!m_preferences->data(registry)->contains("older"));
        QCOMPARE(m_keychain->load(service, last), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestAccounts)
#include "tst_accounts.moc"
