#include "SignIn/Keychain/KeychainStore.h"
#include "support/Keyring.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace {
const QString service = u"com.harvellon.HarvellonConnect.oauth"_s;
const QString item = u"a ä/1-access-token"_s;

HostSystem hostIn(const QString& folder, bool keyring) {
    HostSystem host = HostSystem::linuxDesktop(folder);
    host.usesKeyring = keyring;
    return host;
}

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

    [[nodiscard]] QString file() const {
        return hostIn(m_folder->path(), false).privateFolder + u"/tokens.json"_s;
    }

  private Q_SLOTS:

    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void items_data() {
        QTest::addColumn<bool>("keyring");
        QTest::newRow("Secret Service") << true;
        QTest::newRow("file") << false;
    }

    void items() {
        QFETCH(bool, keyring);
        KeychainStore store(hostIn(m_folder->path(), keyring));
        QVERIFY(store.remove(service, item));
        QCOMPARE(store.load(service, item), std::nullopt);
        QVERIFY(store.save("eins", service, item));
        QVERIFY(store.save("zw\xc3\xb6lf", service, item)); // replaces
        QVERIFY(store.save(QByteArray(), service, u"empty"_s));
        QCOMPARE(QFile::exists(file()), !keyring);

        KeychainStore later(hostIn(m_folder->path(), keyring));
        QCOMPARE(later.load(service, item), std::optional(QByteArray("zw\xc3\xb6lf")));
        QCOMPARE(later.load(service, u"empty"_s).value_or("x"), QByteArray());
        QCOMPARE(later.load(service + u"2"_s, item), std::nullopt);
        QVERIFY(later.remove(service, item));
        QVERIFY(later.remove(service, item));
        QCOMPARE(later.load(service, item), std::nullopt);
    }

    void keyringMayDieAndComeBack() {
        KeychainStore store(hostIn(m_folder->path(), true));
        QVERIFY(store.save("eins", service, item));
        m_keyring.kill();
        QVERIFY(store.save("zwei", service, item));
        QVERIFY(QFile::exists(file()));
        QCOMPARE(store.load(service, item), std::optional(QByteArray("zwei")));
        m_keyring.start();
        QCOMPARE(store.load(service, item), std::optional(QByteArray("zwei"))); // the keyring's is older
        QVERIFY(store.save("drei", service, item));
        QCOMPARE(KeychainStore(hostIn(m_folder->path(), false)).load(service, item), std::nullopt);
        QCOMPARE(store.load(service, item), std::optional(QByteArray("drei")));
    }

    void fileThatCannotBeWrittenDoesNotWin() {
        const QString other = u"other"_s;
        m_keyring.kill();
        {
            KeychainStore store(hostIn(m_folder->path(), true));
            QVERIFY(store.save("alt", service, item) && store.save("allein", service, other));
        }
        m_keyring.start();
        KeychainStore store(hostIn(m_folder->path(), true));
        onFullDisk([&store] { QVERIFY(store.save("neu", service, item)); });
        for (const bool restarted : {false, true}) {
            KeychainStore later(hostIn(m_folder->path(), true));
            KeychainStore& asked = restarted ? later : store;
            QCOMPARE(asked.load(service, item), std::optional(QByteArray("neu")));
            QCOMPARE(asked.load(service, other), std::optional(QByteArray("allein")));
        }
    }

    void fullDiskKeepsWhatIsThere() {
        KeychainStore store(hostIn(m_folder->path(), false));
        QVERIFY(store.save("eins", service, item));
        onFullDisk([&store] { QVERIFY(!store.save("zwei", service, item)); });
        QCOMPARE(store.load(service, item), std::optional(QByteArray("eins")));
    }

    void fileIsForTheUserAloneAndNeverHalf() {
        KeychainStore store(hostIn(m_folder->path(), false));
        QVERIFY(store.save("eins", service, item));

        struct stat status {};

        QCOMPARE(::stat(QFile::encodeName(file()).constData(), &status), 0);
        QCOMPARE(status.st_mode & 0777U, 0600U);

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
