#include "StateFixture.h"

#include "sandbox/ProjectTrees.h"

#include <QFile>
#include <QProcess>

namespace {
/// The other desktop's tools: what they would open is written down, and what they would unmount is unmounted.
class MacShell : public DesktopShell {
  public:
    QStringList calls;
    bool diskutilWorks = true;

    QCoro::Task<ShellResult> run(QString executable, QStringList arguments,
                                 std::chrono::milliseconds limit) override {
        if (executable == QLatin1String("/usr/bin/which"))
            co_return ShellResult{1, {}, {}};
        calls.append(executable + QLatin1Char(' ') + arguments.join(QLatin1Char(' ')));
        if (executable == QLatin1String("/usr/bin/osascript"))
            co_return ShellResult{0, QStringLiteral("https://www.alpenhof.sandbox.test/x\n"), {}};
        if (executable == QLatin1String("/usr/sbin/diskutil") && !diskutilWorks)
            co_return ShellResult{1, {}, QStringLiteral("Unmount failed")};
        if (executable == QLatin1String("/usr/sbin/diskutil") ||
            executable == QLatin1String("/sbin/umount")) {
            const QStringList unmount{QStringLiteral("-u"), arguments.last()};
            co_return co_await DesktopShell::run(QStringLiteral("/usr/bin/fusermount3"), unmount, limit);
        }
        if (executable == QLatin1String("/usr/bin/open"))
            co_return ShellResult{};
        co_return co_await DesktopShell::run(executable, arguments, limit);
    }
};
} // namespace

/// Connect, disconnect and every action with the facts of macOS: the code that decides is the same, and runs
/// here.
class TestMacOSFlow : public StateFixture {
    Q_OBJECT

    MacShell* m_mac = nullptr;
    QString m_arguments; ///< where the stand-in for sshfs writes down what it was given

    /// An sshfs that takes the options of macOS.
    QString sshfs() {
        m_arguments = m_home->filePath(QStringLiteral("arguments"));
        const QString path = m_home->filePath(QStringLiteral("sshfs"));
        QFile script(path);
        if (!script.open(QIODevice::WriteOnly))
            qFatal("no script");
        script.write(
            "#!/bin/sh\n[ \"$1\" = --version ] && exec /usr/bin/sshfs --version\n"
            "printf '%s\\n' \"$@\" >'" +
            m_arguments.toUtf8() +
            "'\nfor word do shift; set -- \"$@\" \"$(printf %s \"$word\" | sed -e 's/,defer_permissions//' "
            "-e 's/,noappledouble//' -e 's/,volname=[^,]*//')\"; done\nexec /usr/bin/sshfs \"$@\"\n");
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    void startOnMac() {
        auto shell = std::make_unique<MacShell>();
        m_mac = shell.get();
        m_mac->browser = m_shell->browser;
        m_state.reset();
        m_shell = std::move(shell);
        HostSystem host = HostSystem::macOS(m_home->path());
        host.preferencesFile = m_home->filePath(QStringLiteral("preferences.ini"));
        host.temporaryFolder = m_home->path();
        host.usesKeyring = false;
        host.sshfsCandidates = {sshfs()};
        host.ssh = m_platform->ssh().binFolder() + QStringLiteral("/ssh");
        start(host);
        // What opens addresses here is another program; the sign-in needs its browser all the same.
        signIn("erika");
        m_mac->opened.clear();
        m_mac->calls.clear();
        m_state->clearActivityLog();
    }

  private Q_SLOTS:

    void connectAndDisconnect() {
        startOnMac();
        const Project project = this->project(0);
        const QString root = m_home->path() + QStringLiteral("/Harvellon/") + project.domain;
        await(m_state->connectProject(project));
        QCOMPARE(messages(),
                 (QStringList{
                     QStringLiteral("Verbinde mit %1 als ssh%2...").arg(project.domain, project.webspaceID),
                     QStringLiteral("Gemountet: ") + root}));
        QFile file(m_arguments);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray arguments = file.readAll();
        for (const QByteArray& option :
             {QByteArray("defer_permissions"), QByteArray("noappledouble"), QByteArray("volname=")})
            QVERIFY2(arguments.contains(option), arguments.constData());
        QVERIFY(QFile::exists(m_home->path() +
                              QStringLiteral("/Library/Application Support/HarvellonConnect/known_hosts")));
        const QString workspace = m_home->path() + QStringLiteral("/HarvellonConnect-VSCode/") +
                                  project.domain + QStringLiteral(".code-workspace");
        QCOMPARE(m_mac->calls.last(), QStringLiteral("/usr/bin/open -a Visual Studio Code ") + workspace);

        m_mac->calls.clear();
        await(m_state->disconnectProject(project.domain, false));
        QCOMPARE(m_mac->calls, QStringList(QStringLiteral("/usr/sbin/diskutil unmount ") + root));
        QCOMPARE(messages().last(), QStringLiteral("Unmounted %1.").arg(project.domain));

        await(m_state->connectProject(project));
        m_mac->calls.clear();
        m_mac->diskutilWorks = false;
        await(m_state->disconnectProject(project.domain, false));
        QCOMPARE(m_mac->calls, (QStringList{QStringLiteral("/usr/sbin/diskutil unmount ") + root,
                                            QStringLiteral("/sbin/umount ") + root}));
        QVERIFY(m_state->connectedDomains().isEmpty());
    }

    void actions() {
        startOnMac();
        const Project project = this->project(0);
        m_state->startOpenSite(project.domain, true);
        await(m_state->openShell(project));
        await(m_state->openDatabase(project));
        await(m_state->fillSearchFromChrome());
        const QString open = QStringLiteral("/usr/bin/open ");
        QCOMPARE(m_mac->opened.size(), 3);
        QCOMPARE(m_mac->opened.at(0), open + QStringLiteral("https://%1/admin").arg(project.domain));
        QCOMPARE(m_mac->opened.at(1),
                 open + QStringLiteral("ssh://ssh%1@%2").arg(project.webspaceID, project.domain));
        QVERIFY(m_mac->opened.at(2).startsWith(open + QStringLiteral("mysql://")));
        QCOMPARE(m_state->searchText(), QStringLiteral("alpenhof.sandbox.test"));
    }

    void brokenSshfsIsExplained() {
        startOnMac();
        HostSystem host = m_state->host();
        QFile script(host.sshfsCandidates.first());
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\necho 'dyld: Library not loaded' >&2\nexit 6\n");
        script.close();
        await(m_state->connectProject(project(0)));
        QCOMPARE(m_state->guidanceMap().value(QStringLiteral("title")).toString(),
                 QStringLiteral("sshfs-Installation ist defekt"));
        m_state->answerGuidance(1);
        QCOMPARE(m_mac->opened,
                 QStringList(QStringLiteral("/usr/bin/open /System/Applications/Utilities/Terminal.app")));
    }
};

QTEST_GUILESS_MAIN(TestMacOSFlow)
#include "tst_macos_flow.moc"
