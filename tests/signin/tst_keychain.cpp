#include "SignIn/Keychain/KeychainStore.h"
#include "support/Keyring.h"
#include "support/ReadOnlyMount.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace {
const QString service = u"com.harvellon.HarvellonConnect.oauth"_s;
const QString item = u"a ä/1-access-token"_s;

void onFullDisk(const std::function<void()>& work) {
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{16, before.rlim_max}; // bytes: writing more fails as on a full disk
    ::setrlimit(RLIMIT_FSIZE, &full);
    work();
    ::setrlimit(RLIMIT_FSIZE, &before);
}
} // namespace

class TestKeychain : public QObject {
    Q_OBJECT

    Keyring m_keyring;
    std::unique_ptr<QTemporaryDir> m_folder;

    [[nodiscard]] HostSystem host(bool keyring) const {
        HostSystem host = HostSystem::linuxDesktop(m_folder->path());
        host.usesKeyring = keyring;
        return host;
    }

    [[nodiscard]] QString file() const { return host(false).privateFolder + u"/tokens.json"_s; }

  private Q_SLOTS:

    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void items() {
        for (const bool keyring : {true, false}) {
            KeychainStore store(host(keyring));
            QVERIFY(store.remove(service, item));
            QCOMPARE(store.load(service, item), std::nullopt);
            QVERIFY(store.save("eins", service, item));
            QVERIFY(store.save("zw\xc3\xb6lf", service, item)); // replaces
            QVERIFY(store.save(QByteArray(), service, u"empty"_s));
            QCOMPARE(QFile::exists(file()), !keyring);
            KeychainStore later(host(keyring));
            QCOMPARE(later.load(service, item), std::optional(QByteArray("zw\xc3\xb6lf")));
            QCOMPARE(later.load(service, u"empty"_s).value_or("x"), QByteArray());
            QCOMPARE(later.load(service + u"2"_s, item), std::nullopt);
            QVERIFY(later.remove(service, item));
            QCOMPARE(later.load(service, item), std::nullopt);
        }
    }

    void keyringMayDieAndComeBack() {
        KeychainStore store(host(true));
        QVERIFY(store.save("eins", service, item));
        m_keyring.kill();
        QVERIFY(store.save("zwei", service, item));
        QVERIFY(QFile::exists(file()));
        QCOMPARE(store.load(service, item), std::optional(QByteArray("zwei")));
        m_keyring.start(true);
        QVERIFY(store.save("zwei!", service, item)); // refused, so the file goes on winning
        m_keyring.kill();
        m_keyring.start();
        QCOMPARE(store.load(service, item), std::optional(QByteArray("zwei!"))); // the keyring's is older
        QVERIFY(store.save("drei", service, item));
        QCOMPARE(KeychainStore(host(false)).load(service, item), std::nullopt);
        QCOMPARE(store.load(service, item), std::optional(QByteArray("drei")));
    }

    void keyringThatIsLockedAsksForItsPassword() {
        KeychainStore store(host(true));
        QVERIFY(store.save("eins", service, item));
        m_keyring.kill();
        m_keyring.start(true);
        QProcess bus;
        bus.start(u"/usr/bin/dbus-monitor"_s, {u"--session"_s, u"member='Prompt'"_s});
        QVERIFY(bus.waitForReadyRead()); // it listens
        QByteArray heard;
        const auto prompts = [&] { return (heard += bus.readAllStandardOutput()).count("member=Prompt"); };
        QCOMPARE(store.load(service, u"absent"_s), std::nullopt);
        QCOMPARE(store.load(service, item), std::nullopt); // nobody can be asked here
        QTRY_COMPARE(prompts(), 1);
        QVERIFY(store.remove(service, u"absent"_s) && !store.remove(service, item));
        m_keyring.kill();
        m_keyring.start();
        QCOMPARE(store.load(service, item), std::optional(QByteArray("eins")));
        bus.kill();
        bus.waitForFinished();
    }

    void fileThatCannotBeWrittenDoesNotWin() {
        const QString other = u"other"_s;
        const QString third = u"third"_s;
        const QString removed = u"removed"_s;
        m_keyring.kill();
        QVERIFY(KeychainStore(host(true)).save("alt", service, item));
        QVERIFY(KeychainStore(host(true)).save("alt", service, other));
        QVERIFY(KeychainStore(host(true)).save("allein", service, third));
        QVERIFY(KeychainStore(host(true)).save("alt", service, removed));
        m_keyring.start();
        KeychainStore store(host(true));
        const QByteArray folder = QFile::encodeName(m_folder->path());
        if (!mountReadOnly(folder, folder))
            QSKIP("this user may not mount");
        QVERIFY(store.remove(service, removed));
        QCOMPARE(store.load(service, removed), std::nullopt);
        for (const QString& account : {item, other})
            QVERIFY(store.save("neu", service, account));
        QCOMPARE(::umount(folder), 0);
        m_keyring.kill();
        m_keyring.start(true); // which value is outdated cannot be asked
        QCOMPARE(store.load(service, item), std::nullopt);
        m_keyring.kill();
        m_keyring.start();
        QCOMPARE(store.load(service, item), std::optional(QByteArray("neu")));
        QCOMPARE(store.load(service, other), std::optional(QByteArray("neu")));
        QCOMPARE(store.load(service, third), std::optional(QByteArray("allein")));
        onFullDisk([&store] { QVERIFY(store.save("neuer", service, item)); });
        KeychainStore later(host(true)); // as after another start
        for (KeychainStore* asked : {&store, &later}) {
            QCOMPARE(asked->load(service, item), std::optional(QByteArray("neuer")));
            QCOMPARE(asked->load(service, third), std::optional(QByteArray("allein")));
        }
    }

    void fileIsForTheUserAloneAndNeverHalf() {
        KeychainStore store(host(false));
        QVERIFY(store.save("eins", service, item));

        onFullDisk([&store] { QVERIFY(!store.save("zwei", service, item)); });
        QCOMPARE(store.load(service, item), std::optional(QByteArray("eins")));
        constexpr QFile::Permissions owner = QFile::ReadOwner | QFile::WriteOwner;
        QCOMPARE(QFile::permissions(file()), owner | QFile::ReadUser | QFile::WriteUser);
        QVERIFY(!(QFile::permissions(host(false).privateFolder) & (QFile::ReadOther | QFile::ExeOther)));

        QFile broken(file());
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("{\"com.harv");
        broken.close();
        QCOMPARE(store.load(service, item), std::nullopt);
        QVERIFY(!store.remove(service, item));
        QVERIFY(store.save("zwei", service, item));
        QCOMPARE(store.load(service, item), std::optional(QByteArray("zwei")));
        QVERIFY(QFile::exists(file() + u".damaged"_s));
    }
};

QTEST_GUILESS_MAIN(TestKeychain)
#include "tst_keychain.moc"
