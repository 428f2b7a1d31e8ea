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
        const QStringList compared{u"config"_s, u"core.checkStat"_s};
        QCOMPARE(git(QStringList{u"-C"_s, root + u"/b.de/web"_s} + compared), u"minimal"_s);
        QCOMPARE(git({u"-C"_s, root + u"/a.de"_s, u"config"_s, u"core.trustctime"_s}), u"false"_s);
        QCOMPARE(git(QStringList{u"-C"_s, m_home} + compared), QString());

        QVERIFY(GitSettings::trust(m_host, {u"c.de"_s}));
        QVERIFY(!isTrusted(root + u"/a.de"_s) && isTrusted(root + u"/c.de"_s));
        turnOff();
        QVERIFY(!isTrusted(root + u"/c.de"_s));
        QVERIFY(!QFile::exists(GitFiles::configPath(m_host)));
    }

    void aMountRootThatIsALink() {
        QVERIFY(QDir().mkpath(m_folder->filePath(u"platte"_s)));
        QVERIFY(QFile::link(m_folder->filePath(u"platte"_s), m_host.mountRoot()));
        const QString repository = m_host.mountRoot() + u"/a.de"_s;
        makeForeignRepository(repository);
        turnOn({u"a.de"_s});
        QVERIFY(isTrusted(repository));
        QCOMPARE(git({u"-C"_s, repository, u"config"_s, u"core.checkStat"_s}), u"minimal"_s);
    }

    void nothingElseChanges_data() {
        QTest::addColumn<QString>("file"); // where the user's configuration is
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("left"); // by git, behind what was there
        const auto row = [](const char* name, const QString& file, const QByteArray& before,
                            const QByteArray& left = {}) { QTest::newRow(name) << file << before << left; };
        row("usual", u".gitconfig"_s, "[user]\n\tname = A\n\n# x\n[alias]\n  s=status ; y\n");
        row("below ~/.config", u".config/git/config"_s, "[user]\n\tname = A\n");
        row("includes of the user", u".gitconfig"_s, "[include]\n\tpath = a\n[user]\n\tname = A\n");
        row("carriage returns", u".gitconfig"_s, "[user]\r\n\tname = A\r\n");
        row("empty", u".gitconfig"_s, "");
        row("no line feed at the end", u".gitconfig"_s, "[user]\n\tname = A", "\n");
        row("a comment at the end", u".gitconfig"_s, "[user]\n\tname = A\n# x\n", "[include]\n");
    }

    void nothingElseChanges() {
        QFETCH(const QString, file);
        QFETCH(const QByteArray, before);
        QFETCH(const QByteArray, left);
        const QString dotfiles = m_folder->filePath(u"dotfiles"_s);
        for (const bool linked : {false, true}) {
            const QString path = m_home + u'/' + file;
            write(linked ? dotfiles : path, before);
            QVERIFY(!linked || (QFile::remove(path) && QFile::link(dotfiles, path)));
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
            QVERIFY(!areOn());
            turnOn();
            QVERIFY(areOn());
            const QByteArray on = read(path);
            QVERIFY(on.contains("path = ~/.local/share/HarvellonConnect/git/config\n"));
            turnOn(); // an entry that is there already
            QCOMPARE(read(path), on);
            QVERIFY(GitSettings::trust(m_host, {u"a.de"_s}));
            QCOMPARE(read(path), on);
            turnOff();
            QVERIFY(!areOn());
            QCOMPARE(read(path), before + left);
            QCOMPARE(QFileInfo(path).isSymLink(), linked);
            QCOMPARE(QFile::permissions(path) & QFile::WriteOwner, QFile::Permissions());
        }
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

    void refusals_data() {
        QTest::addColumn<bool>("wanted");
        QTest::addColumn<QString>("obstacle");
        QTest::addColumn<QString>("reason");
        const auto row = [](const char* name, bool wanted, const QString& obstacle, const QString& reason) {
            QTest::addRow("%s, %s", name, wanted ? "on" : "off") << wanted << obstacle << reason;
        };
        for (const bool wanted : {true, false}) {
            row("another change under way", wanted, u".gitconfig.lock"_s, u"could not lock"_s);
            row("a broken configuration", wanted, u".gitconfig"_s, u"bad config line"_s);
            row("no git", wanted, QString(), u"git ist nicht installiert."_s);
        }
        row("our folder is a file", true, u".local/share/HarvellonConnect"_s, u"kann nicht geschrieben"_s);
    }

    void refusals() {
        QFETCH(const bool, wanted);
        QFETCH(const QString, obstacle);
        QFETCH(const QString, reason);
        const QString path = m_home + u"/.gitconfig"_s;
        write(path, "[user]\n\tname = A\n");
        if (!wanted)
            turnOn();
        if (obstacle.isEmpty())
            m_host.gitCandidates = {u"/nowhere/git"_s, m_home};
        else
            write(m_home + u'/' + obstacle, "[broken");
        const QByteArray before = read(path);
        try {
            wanted ? turnOn() : turnOff();
            QFAIL("changed");
        } catch (const GitError& error) {
            QVERIFY2(error.description().contains(reason), qPrintable(error.description()));
        }
        QCOMPARE(read(path), before);
    }
};

QTEST_GUILESS_MAIN(TestGitSettings)
#include "tst_git_settings.moc"
