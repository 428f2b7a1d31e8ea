#include "Mounting/LegacyKey.h"
#include "Mounting/MountOptions.h"
#include "Mounting/MountPoint.h"
#include "Mounting/MounterError.h"
#include "Mounting/SSHFSReadiness.h"

#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using State = SSHFSReadiness::State;

namespace {
Project projectNamed(const std::optional<QString>& name) {
    return {QStringLiteral("example.org"), name, QStringLiteral("4711"), QStringLiteral("/web"),
            ProjectType::ssh};
}

void touch(const QString& path, QFile::Permissions permissions = QFile::ReadOwner | QFile::WriteOwner) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.setPermissions(permissions));
}
} // namespace

class TestMountingRules : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void argumentsOnBothDesktops() {
        const Project project = projectNamed(std::nullopt);
        const QStringList mac = sshfsArguments(HostSystem::macOS(QStringLiteral("/Users/e")), project,
                                               QStringLiteral("/Users/e/Harvellon/example.org"));
        QCOMPARE(mac, (QStringList{
                          QStringLiteral("ssh4711@example.org:/web"),
                          QStringLiteral("/Users/e/Harvellon/example.org"), QStringLiteral("-o"),
                          QStringLiteral(
                              "reconnect,ServerAliveInterval=15,ServerAliveCountMax=3,defer_permissions,"
                              "noappledouble,volname=HV example.org,StrictHostKeyChecking=accept-new,"
                              "UserKnownHostsFile=\"/Users/e/Library/Application Support/HarvellonConnect/"
                              "known_hosts\""),
                          QStringLiteral("-f")}));
        QCOMPARE(mountOptions(HostSystem::linuxDesktop(QStringLiteral("/home/e")),
                              projectNamed(QStringLiteral("N"))),
                 QStringLiteral("reconnect,ServerAliveInterval=15,ServerAliveCountMax=3,fsname=HV N,"
                                "StrictHostKeyChecking=accept-new,"
                                "UserKnownHostsFile=/home/e/.local/share/HarvellonConnect/known_hosts"));
    }

    void valuesCannotBecomeOptions() {
        QCOMPARE(optionValue(QStringLiteral("a,ssh_command=/x\\")), QStringLiteral("a\\,ssh_command=/x\\\\"));
        const QString options = mountOptions(HostSystem::linuxDesktop(QStringLiteral("/h,100%/\"e\" x")),
                                             projectNamed(QStringLiteral("N")));
        QVERIFY2(options.contains(QStringLiteral("UserKnownHostsFile=\"/h\\,100%%/\\\\\"e\\\\\" x/")),
                 qPrintable(options));
    }

    void zeroInANameCutsNothingOff() {
        const QString options = mountOptions(HostSystem::linuxDesktop(QStringLiteral("/h")),
                                             projectNamed(QStringLiteral("a") + QChar(QChar::Null)));
        QVERIFY(options.contains(QStringLiteral("fsname=HV a ,StrictHostKeyChecking")));
    }

    void domains_data() {
        QTest::addColumn<QString>("domain");
        QTest::addColumn<bool>("plain");
        QTest::newRow("usual") << "www.example.org" << true;
        QTest::newRow("umlaut") << QStringLiteral("bücher.example") << true;
        for (const char* bad : {"", ".", "..", "a/b", "../x", "a\nb", "a b", "-oProxyCommand=x", "a:b", "a@b",
                                "a\\b", "[a]", "a`b`", "a\x1b[2Jb", "a\xe2\x80\xae"})
            QTest::addRow("%s", QByteArray(bad).toHex().constData()) << QString::fromUtf8(bad) << false;
        QTest::newRow("zero") << QString(QChar(0)) << false;
    }

    void domains() {
        QFETCH(QString, domain);
        QFETCH(bool, plain);
        QCOMPARE(isPlainDomain(domain), plain);
    }

    void probes_data() {
        QTest::addColumn<QString>("output");
        QTest::addColumn<State>("state");
        QTest::addColumn<QString>("detail");
        const QString mismatch = QStringLiteral(
            "Code-Signatur-Mismatch zwischen sshfs und libfuse (Team IDs stimmen nicht überein).");
        QTest::newRow("good") << "SSHFS version 3.7.3\nFUSE library version 3.14" << State::ready << "";
        QTest::newRow("good, speaks of its loader")
            << "dyld: note\nFUSE library version 2" << State::ready << "";
        QTest::newRow("library") << "Library not loaded: x" << State::notStarting << mismatch;
        QTest::newRow("teams") << "mapping has different Team IDs" << State::notStarting << mismatch;
        QTest::newRow("loader in capitals") << "DYLD error" << State::notStarting << mismatch;
        QTest::newRow("lower case mark") << " sshfs version \n" << State::notStarting << "sshfs version";
        QTest::newRow("silent") << " \n" << State::notStarting << "Unbekannter Fehler beim Start von sshfs.";
    }

    void probes() {
        QFETCH(QString, output);
        QFETCH(State, state);
        QFETCH(QString, detail);
        QCOMPARE(classifyProbe(output), (SSHFSReadiness{state, detail}));
    }

    void diagnosisOfRealPrograms() {
        QTemporaryDir folder;
        Shell shell;
        HostSystem host = HostSystem::linuxDesktop(folder.path());
        const QString first = folder.filePath(QStringLiteral("first"));
        host.sshfsCandidates = {folder.path(), first};
        touch(first);
        QCOMPARE(await(diagnoseSSHFS(host, shell)).state, State::notInstalled); // a folder, a plain file
        touch(first, QFile::ReadOwner | QFile::ExeOwner); // not a program that could start
        QCOMPARE(
            await(diagnoseSSHFS(host, shell)),
            (SSHFSReadiness{State::notStarting, QStringLiteral("Start von ") + first +
                                                    QStringLiteral(" fehlgeschlagen. Ist es installiert und "
                                                                   "erreichbar?")}));
        host.sshfsCandidates = {folder.path(), QStringLiteral("/usr/bin/sshfs")};
        QCOMPARE(await(diagnoseSSHFS(host, shell)), (SSHFSReadiness{State::ready, {}}));
    }

    void failuresOfSSHFS_data() {
        using Case = MounterError::Case;
        QTest::addColumn<QString>("errors");
        QTest::addColumn<Case>("error");
        QTest::newRow("key") << "x@y: Permission denied (publickey)." << Case::authenticationFailed;
        QTest::newRow("capitals") << "PERMISSION DENIED" << Case::authenticationFailed;
        QTest::newRow("methods") << "No supported methods: PublicKey" << Case::authenticationFailed;
        QTest::newRow("authentication") << "Authentication failed." << Case::authenticationFailed;
        QTest::newRow("other") << "read: Connection reset by peer" << Case::mountFailed;
    }

    void failuresOfSSHFS() {
        QFETCH(QString, errors);
        QFETCH(MounterError::Case, error);
        QCOMPARE(MounterError::fromSSHFS(errors, QStringLiteral("h")).error(), error);
    }

    void legacyKeyGoesAndOthersStay() {
        QTemporaryDir home;
        const QString ssh = home.filePath(QStringLiteral(".ssh/"));
        removeLegacyKeyPair(home.path());                                           // nothing there
        QVERIFY(QDir().mkpath(ssh + QStringLiteral("harvellonconnect_ed25519/x"))); // cannot be removed
        touch(ssh + QStringLiteral("harvellonconnect_ed25519.pub"));
        touch(ssh + QStringLiteral("id_ed25519"));
        removeLegacyKeyPair(home.path());
        QCOMPARE(QDir(ssh).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 (QStringList{QStringLiteral("harvellonconnect_ed25519"), QStringLiteral("id_ed25519")}));
        QVERIFY(QDir(ssh + QStringLiteral("harvellonconnect_ed25519")).removeRecursively());
        touch(ssh + QStringLiteral("harvellonconnect_ed25519"));
        removeLegacyKeyPair(home.path());
        QCOMPARE(QDir(ssh).entryList(QDir::Files), QStringList{QStringLiteral("id_ed25519")});
    }
};

QTEST_GUILESS_MAIN(TestMountingRules)
#include "tst_mounting_rules.moc"
