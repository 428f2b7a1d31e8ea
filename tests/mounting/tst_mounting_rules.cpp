#include "Mounting/Ending/LeftoverMounts.h"
#include "Mounting/Keys/LegacyKey.h"
#include "Mounting/MountOptions.h"
#include "Mounting/MounterError.h"
#include "Mounting/Setup/SSHFSGuidance.h"
#include "Mounting/Setup/SSHFSReadiness.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using State = SSHFSReadiness::State;

namespace {
Project projectNamed(const std::optional<QString>& name) {
    return {u"example.org"_s, name, u"4711"_s, u"/web"_s, ProjectType::ssh};
}

void touch(const QString& path) {
    QVERIFY(QFile(path).open(QIODevice::WriteOnly));
}
} // namespace

class TestMountingRules : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void tellsOwnMountsOnBothDesktops() {
        const struct {
            bool mac;
            bool own;
            QString source;
            QString type;
            QString fuse;
        } rows[] = {
            {true, true, u"fuse-t:/HV Alpenhof"_s, u"nfs"_s, u"FUSE-T"_s},
            {true, false, u"fuse-t:/Fotos"_s, u"nfs"_s, u"FUSE-T"_s},
            {true, false, u"nas:/HV Alpenhof"_s, u"nfs"_s, {}},
            {true, true, u"ssh4711@example.org:/web"_s, u"macfuse"_s, u"macFUSE"_s},
            {true, false, u"root@example.org:/web"_s, u"macfuse"_s, u"macFUSE"_s},
            {false, true, u"HV Alpenhof"_s, u"fuse.sshfs"_s, u"FUSE"_s},
            {false, false, u"me@example.org:"_s, u"fuse.sshfs"_s, u"FUSE"_s},
        };

        for (const auto& [mac, own, source, type, fuse] : rows) {
            const HostSystem host =
                mac ? HostSystem::macOS(u"/Users/e"_s) : HostSystem::linuxDesktop(u"/home/e"_s);
            const MountTable::Entry mount{u"example.org"_s, source, type};
            QCOMPARE(fuseOf(host, mount).value_or(FuseKind{}).name, fuse);
            QVERIFY2(isOwnMount(host, mount) == own, qPrintable(source));
        }
    }

    void argumentsOnBothDesktops() {
        const Project project = projectNamed(std::nullopt);
        const QStringList mac =
            sshfsArguments(HostSystem::macOS(u"/Users/e"_s), project, u"/Users/e/Harvellon/example.org"_s);
        QCOMPARE(mac,
                 (QStringList{u"ssh4711@example.org:/web"_s, u"/Users/e/Harvellon/example.org"_s, u"-o"_s,
                              u"reconnect,ServerAliveInterval=15,ServerAliveCountMax=3,defer_permissions,"
                              "noappledouble,volname=HV example.org,StrictHostKeyChecking=accept-new,"
                              "UserKnownHostsFile=\"/Users/e/Library/Application Support/HarvellonConnect/"
                              "known_hosts\""_s,
                              u"-f"_s}));
        QCOMPARE(mountOptions(HostSystem::linuxDesktop(u"/home/e"_s), projectNamed(u"N"_s)),
                 u"reconnect,ServerAliveInterval=15,ServerAliveCountMax=3,attr_timeout=0,auto_cache,"
                 "negative_timeout=1,cache_timeout=25,ControlPath=none,fsname=HV "
                 "N,StrictHostKeyChecking=accept-new,"
                 "UserKnownHostsFile=/home/e/.local/share/HarvellonConnect/known_hosts"_s);
    }

    void valuesCannotBecomeOptions() {
        QCOMPARE(optionValue(u"a,ssh_command=/x\\"_s), u"a\\,ssh_command=/x\\\\"_s);
        const QString options =
            mountOptions(HostSystem::linuxDesktop(u"/h,100%/\"e\" x"_s), projectNamed(u"N"_s));
        QVERIFY2(options.contains(u"UserKnownHostsFile=\"/h\\,100%%/\\\\\"e\\\\\" x/"_s),
                 qPrintable(options));
        QVERIFY(mountOptions(HostSystem::linuxDesktop(u"/h"_s), projectNamed(u"a"_s + QChar(QChar::Null)))
                    .contains(u"fsname=HV a ,StrictHostKeyChecking"_s));
    }

    void probes() {
        const QString mismatch =
            u"Code-Signatur-Mismatch zwischen sshfs und libfuse (Team IDs stimmen nicht überein)."_s;
        for (const char* output : {"Library not loaded: x", "mapping has different Team IDs", "DYLD error"})
            QCOMPARE(classifyProbe(QString::fromLatin1(output)),
                     (SSHFSReadiness{State::notStarting, mismatch}));
        QCOMPARE(classifyProbe(u"dyld: note\nFUSE library version 2"_s), (SSHFSReadiness{State::ready, {}}));
        QCOMPARE(classifyProbe(u" sshfs version \n"_s),
                 (SSHFSReadiness{State::notStarting, u"sshfs version"_s}));
        QCOMPARE(classifyProbe(u" \n"_s),
                 (SSHFSReadiness{State::notStarting, u"Unbekannter Fehler beim Start von sshfs."_s}));
    }

    void onlyProgramsAreCandidates() {
        const QTemporaryDir folder;
        HostSystem host = HostSystem::linuxDesktop(folder.path());
        const QString plain = folder.filePath(u"plain"_s);
        touch(plain);
        host.sshfsCandidates = {folder.path(), plain};
        QCOMPARE(sshfsPath(host), std::nullopt);
        host.sshfsCandidates.append(u"/usr/bin/sshfs"_s);
        QCOMPARE(sshfsPath(host), std::optional(u"/usr/bin/sshfs"_s));
    }

    void linuxGuidanceNamesThePackage() {
        const QHash<QString, QString> commands{
            {u"NAME=Mint\nID=linuxmint\nID_LIKE=\"ubuntu debian\"\n"_s, u"sudo apt install sshfs"_s},
            {u"ID=fedora\n"_s, u"sudo dnf install fuse-sshfs"_s},
            {u"ID=\"opensuse-leap\"\nID_LIKE=\"suse opensuse\"\n"_s, u"sudo zypper install sshfs"_s},
            {u""_s, u"sudo apt install sshfs"_s}};
        for (const QString& osRelease : commands.keys()) {
            const Guidance guidance = setupGuidance(HostSystem::linuxDesktop({}, osRelease));
            QCOMPARE(guidance.buttons.value(0).target, commands.value(osRelease));
            QVERIFY(guidance.text.contains(commands.value(osRelease)));
        }
    }

    void refusedKeysAreRecognised() {
        const auto error = [](const char* errors) {
            return MounterError::fromSSHFS(QString::fromLatin1(errors), u"h"_s).error();
        };
        for (const char* refusal :
             {"PERMISSION DENIED", "No supported methods: PublicKey", "Authentication failed."})
            QCOMPARE(error(refusal), MounterError::Case::authenticationFailed);
        QCOMPARE(error("read: Connection reset by peer"), MounterError::Case::mountFailed);
    }

    void onlyTheLegacyKeyIsDeleted() {
        QTemporaryDir home;
        const QString ssh = home.filePath(u".ssh/"_s);
        removeLegacyKeyPair(home.path());                              // nothing there
        QVERIFY(QDir().mkpath(ssh + u"harvellonconnect_ed25519/x"_s)); // cannot be removed
        touch(ssh + u"harvellonconnect_ed25519.pub"_s);
        touch(ssh + u"id_ed25519"_s);
        removeLegacyKeyPair(home.path());
        QCOMPARE(QDir(ssh).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 (QStringList{u"harvellonconnect_ed25519"_s, u"id_ed25519"_s}));
        QVERIFY(QDir(ssh + u"harvellonconnect_ed25519"_s).removeRecursively());
        touch(ssh + u"harvellonconnect_ed25519"_s);
        removeLegacyKeyPair(home.path());
        QCOMPARE(QDir(ssh).entryList(QDir::Files), QStringList{u"id_ed25519"_s});
    }
};

QTEST_GUILESS_MAIN(TestMountingRules)
#include "tst_mounting_rules.moc"
