#include "System/Git/GitFiles.h"
#include "System/Git/GitSettings.h"
#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

/// The real git, with a home folder of its own.
class TestGitSettings : public QObject {
    Q_OBJECT

    Shell m_shell;
    std::unique_ptr<QTemporaryDir> m_folder;
    HostSystem m_host;
    QString m_home;

    static void write(const QString& path, const QByteArray& content) {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "none";
    }

    /// What git prints, and what it complains of.
    [[nodiscard]] QString git(const QStringList& arguments) const {
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(u"/usr/bin/env"_s, m_host.gitEnvironment + QStringList{u"git"_s} + arguments);
        process.waitForFinished();
        return QString::fromUtf8(process.readAll()).trimmed();
    }

    /// A repository of somebody else, as a mount shows it.
    void makeForeignRepository(const QString& folder) const {
        QDir().mkpath(folder);
        QCOMPARE(git({u"-C"_s, folder, u"init"_s, u"--quiet"_s}), QString());
        for (const QString& path : {folder, folder + u"/.git"_s})
            if (::chown(QFile::encodeName(path), 12345, 12345) != 0)
                qputenv("GIT_TEST_ASSUME_DIFFERENT_OWNER", "1");
    }

    [[nodiscard]] bool isTrusted(const QString& folder) const {
        return !git({u"-C"_s, folder, u"status"_s}).contains(u"dubious ownership"_s);
    }

    void turnOn(const QStringList& trusted = {}) { await(GitSettings::turnOn(m_host, m_shell, trusted)); }

    void turnOff() { await(GitSettings::turnOff(m_host, m_shell)); }

    bool areOn() { return await(GitSettings::areOn(m_host, m_shell)); }

  private Q_SLOTS:

    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_home = m_folder->filePath(u"Büro [neu] \"7\" \\a"_s);
        QVERIFY(QDir().mkpath(m_home));
        m_host = HostSystem::linuxDesktop(m_home);
        const QString disk = m_folder->filePath(u"platte"_s);
        QVERIFY(QDir().mkpath(disk) && QFile::link(disk, m_host.mountRoot())); // git compares real paths
        m_host.gitEnvironment = HostSystem::environmentOfGit(m_home);
    }

    void onlyWhatIsMountedIsTrusted() {
        const QString root = m_host.mountRoot();
        const QString beside = m_home + u"/eigenes"_s;
        for (const QString& folder : {root + u"/a.de"_s, root + u"/b.de/web"_s, root + u"/c.de"_s, beside})
            makeForeignRepository(folder);
        QVERIFY(!isTrusted(root + u"/a.de"_s));
        turnOn({u"a.de"_s, u"a.de/web"_s, u"b.de"_s, u"b.de/web"_s});
        QVERIFY(isTrusted(root + u"/a.de"_s) && isTrusted(root + u"/b.de/web"_s));
        QVERIFY(!isTrusted(root + u"/c.de"_s) && !isTrusted(beside));
        QCOMPARE(git({u"-C"_s, root + u"/a.de"_s, u"config"_s, u"core.trustctime"_s}), u"false"_s);
        QCOMPARE(git({u"-C"_s, beside, u"config"_s, u"core.trustctime"_s}), QString());
        QVERIFY(GitSettings::trust(m_host, {u"c.de"_s}));
        QVERIFY(!isTrusted(root + u"/a.de"_s) && isTrusted(root + u"/c.de"_s));
        turnOff();
        QVERIFY(!isTrusted(root + u"/c.de"_s));
        QVERIFY(!QFile::exists(GitFiles::configPath(m_host)));
    }

    void nothingElseChanges_data() {
        QTest::addColumn<QString>("file"); // where the user's configuration is
        QTest::addColumn<bool>("linked");
        QTest::newRow("usual") << u".gitconfig"_s << false;
        QTest::newRow("linked") << u".gitconfig"_s << true;
        QTest::newRow("below ~/.config") << u".config/git/config"_s << false;
    }

    void nothingElseChanges() {
        QFETCH(const QString, file);
        QFETCH(const bool, linked);
        const QByteArray before =
            "[include]\n\tpath = a\n[user]\n\tname = A\n\n# x\n[alias]\n  s=status ; y\n";
        const QString dotfiles = m_folder->filePath(u"dotfiles"_s);
        const QString path = m_home + u'/' + file;
        write(linked ? dotfiles : path, before);
        QVERIFY(!linked || QFile::link(dotfiles, path));
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        turnOn();
        QVERIFY(areOn());
        const QByteArray on = read(path);
        QVERIFY(on.contains("path = ~/.local/share/HarvellonConnect/git/config\n"));
        turnOn(); // an entry that is there already
        QVERIFY(GitSettings::trust(m_host, {u"a.de"_s}));
        QCOMPARE(read(path), on);
        turnOff();
        QVERIFY(!areOn());
        QCOMPARE(read(path), before);
        QCOMPARE(QFileInfo(path).isSymLink(), linked);
        QCOMPARE(QFile::permissions(path) & QFile::WriteOwner, QFile::Permissions());
    }

    void anEntryIsFoundWhereverItStands() {
        write(m_home + u"/.gitconfig"_s, "[include]\n\tpath = more\n");
        const QByteArray byHand =
            "[include]\n\tpath = \"" +
            GitFiles::configPath(m_host).replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s).toUtf8() + "\"\n";
        write(m_home + u"/more"_s, byHand);
        write(m_home + u"/.config/git/config"_s, byHand);
        QVERIFY(areOn());
        turnOff();
        QVERIFY(!areOn());
        QCOMPARE(read(m_home + u"/.gitconfig"_s), "[include]\n\tpath = more\n");
        QCOMPARE(read(m_home + u"/more"_s), "");
    }

    void whatIsRefusedChangesNothing() {
        const QString path = m_home + u"/.gitconfig"_s;
        write(path, "[user]\n\tname = A\n");
        const auto problem = [this] {
            try {
                turnOn();
            } catch (const GitError& error) {
                return error.description();
            }
            return QString();
        };
        write(m_home + u"/.local/share/HarvellonConnect"_s, "a file in the place of our folder");
        QVERIFY(problem().contains(u"kann nicht geschrieben"_s));
        m_host.gitCandidates = {u"/nowhere/git"_s, m_home};
        QCOMPARE(problem(), u"git ist nicht installiert."_s);
        QCOMPARE(read(path), "[user]\n\tname = A\n");
    }
};

QTEST_GUILESS_MAIN(TestGitSettings)
#include "tst_git_settings.moc"
