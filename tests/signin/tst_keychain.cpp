#include "SignIn/KeychainStore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {
const QString service = QStringLiteral("com.harvellon.HarvellonConnect.oauth");
const QString item = QStringLiteral("a ä/1-access-token");

HostSystem hostIn(const QString& folder, bool keyring) {
    HostSystem host = HostSystem::linuxDesktop(folder);
    host.usesKeyring = keyring;
    return host;
}
} // namespace

class TestKeychain : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    [[nodiscard]] QString file() const {
        return hostIn(m_folder->path(), false).privateFolder + QStringLiteral("/tokens.json");
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
        QVERIFY(store.save(QByteArray(), service, QStringLiteral("empty")));
        QCOMPARE(QFile::exists(file()), !keyring);

        KeychainStore later(hostIn(m_folder->path(), keyring));
        QCOMPARE(later.load(service, item), std::optional(QByteArray("zw\xc3\xb6lf")));
        QCOMPARE(later.load(service, QStringLiteral("empty")).value_or("x"), QByteArray());
        QCOMPARE(later.load(service + QStringLiteral("2"), item), std::nullopt);
        QVERIFY(later.remove(service, item));
        QVERIFY(later.remove(service, item));
        QCOMPARE(later.load(service, item), std::nullopt);
    }

    void withoutAServiceTheFileTakesItsPlaceUntilItIsBack() {
        {
            KeychainStore store(hostIn(m_folder->path(), true));
            QVERIFY(store.save("alt", service, item));
        }
        // libsecret keeps its connection, so the silent bus needs a process of its own: the file says the
        // same.
        KeychainStore file(hostIn(m_folder->path(), false));
        QVERIFY(file.save("neu", service, item));

        KeychainStore store(hostIn(m_folder->path(), true));
        QCOMPARE(store.load(service, item), std::optional(QByteArray("neu"))); // the newer one
        QVERIFY(store.save("neuer", service, item));
        QCOMPARE(file.load(service, item), std::nullopt); // moved back to the keyring
        QCOMPARE(store.load(service, item), std::optional(QByteArray("neuer")));
        QVERIFY(store.remove(service, item));
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
        QVERIFY(QFile::exists(file() + QStringLiteral(".damaged")));
    }
};

QTEST_GUILESS_MAIN(TestKeychain)
#include "tst_keychain.moc"
