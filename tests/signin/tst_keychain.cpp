#include "SignIn/Keychain/KeychainStore.h"

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

/// A session bus with a keyring that can die.
class Keyring {
  public:
    Keyring() {
        QFile configuration(m_folder.filePath(u"bus.conf"_s));
        if (!configuration.open(QIODevice::WriteOnly))
            qFatal("no configuration");
        configuration.write(
            "<busconfig><type>session</type><listen>unix:path=" +
            QFile::encodeName(m_folder.filePath(u"bus"_s)) +
            "</listen><policy context='default'><allow send_destination='*' eavesdrop='true'/>"
            "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>");
        configuration.close();
        m_bus.start(u"/usr/bin/dbus-daemon"_s,
                    {u"--nofork"_s, u"--config-file="_s + configuration.fileName()});
        if (!QTest::qWaitFor([this] { return QFile::exists(m_folder.filePath(u"bus"_s)); }))
            qFatal("no bus");
        qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + QFile::encodeName(m_folder.filePath(u"bus"_s)));
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder.path()));
        qunsetenv("DISPLAY"); // a keyring that sees one opens a dialog
        start();
    }

    ~Keyring() {
        kill();
        m_bus.kill();
        m_bus.waitForFinished();
    }

    Q_DISABLE_COPY_MOVE(Keyring)

    void start() {
        m_daemon.start(u"/usr/bin/gnome-keyring-daemon"_s,
                       {u"--foreground"_s, u"--unlock"_s, u"--components=secrets"_s});
        m_daemon.write("test");
        m_daemon.closeWriteChannel();
        const auto answers = [] {
            return QProcess::execute(u"/usr/bin/dbus-send"_s, {u"--session"_s, u"--print-reply=literal"_s,
                                                               u"--dest=org.freedesktop.secrets"_s, u"/"_s,
                                                               u"org.freedesktop.DBus.Peer.Ping"_s}) == 0;
        };
        if (!QTest::qWaitFor(answers))
            qFatal("no keyring");
    }

    void kill() {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }

  private:
    QTemporaryDir m_folder;
    QProcess m_bus;
    QProcess m_daemon;
};
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

    void fullDiskKeepsWhatIsThere() {
        KeychainStore store(hostIn(m_folder->path(), false));
        QVERIFY(store.save("eins", service, item));
        rlimit before{};
        ::getrlimit(RLIMIT_FSIZE, &before);
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit full{16, before.rlim_max}; // bytes: writing more fails as on a full disk
        ::setrlimit(RLIMIT_FSIZE, &full);
        const bool saved = store.save("zwei", service, item);
        ::setrlimit(RLIMIT_FSIZE, &before);
        QVERIFY(!saved);
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
