#include "StateFixture.h"

#include "sandbox/ssh/ProjectTrees.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace {
/// Stands in for the macOS tools: records what they would open, and unmounts with the tools of Linux.
class MacShell : public DesktopShell {
  public:
    QStringList calls;
    bool diskutilWorks = true;

    QCoro::Task<ShellResult> run(QString executable, QStringList arguments,
                                 std::chrono::milliseconds limit) override {
        if (executable == "/usr/bin/which"_L1)
            co_return ShellResult{1, {}, {}};
        calls.append(executable + u' ' + arguments.join(u' '));
        if (executable == "/usr/bin/osascript"_L1)
            co_return ShellResult{0, u"https://www.alpenhof.sandbox.test/x\n"_s, {}};
        if (executable == "/usr/sbin/diskutil"_L1 && !diskutilWorks)
            co_return ShellResult{1, {}, u"Unmount failed"_s};
        if (executable == "/usr/sbin/diskutil"_L1 || executable == "/sbin/umount"_L1) {
            const QStringList unmount{u"-u"_s, arguments.last()};
            co_return co_await DesktopShell::run(u"/usr/bin/fusermount3"_s, unmount, limit);
        }
        if (executable == "/usr/bin/open"_L1)
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
        m_arguments = m_home->filePath(u"arguments"_s);
        const QString path = m_home->filePath(u"sshfs"_s);
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
        host.preferencesFile = m_home->filePath(u"preferences.ini"_s);
        host.temporaryFolder = m_home->path();
        host.usesKeyring = false;
        host.sshfsCandidates = {sshfs()};
        host.ssh = m_platform->ssh().binFolder() + u"/ssh"_s;
        start(host);
        // The recording opener starts no browser, so sign in before the records are cleared.
        signIn("erika");
        m_mac->opened.clear();
        m_mac->calls.clear();
        m_state->activityLog()->clear();
    }

  private Q_SLOTS:

    void connectAndDisconnect() {
        startOnMac();
        const Project project = this->project(0);
        const QString root = m_home->path() + u"/Harvellon/"_s + project.domain;
        await(m_state->parts().connections.connect(project));
        QFile file(m_arguments);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray arguments = file.readAll();
        for (const QByteArray& option :
             {QByteArray("defer_permissions"), QByteArray("noappledouble"), QByteArray("volname=")})
            QVERIFY2(arguments.contains(option), arguments.constData());
        QVERIFY(
            QFile::exists(m_home->path() + u"/Library/Application Support/HarvellonConnect/known_hosts"_s));
        const QString workspace =
            m_home->path() + u"/HarvellonConnect-VSCode/"_s + project.domain + u".code-workspace"_s;
        QCOMPARE(m_mac->calls.last(), u"/usr/bin/open -a Visual Studio Code "_s + workspace);

        m_mac->calls.clear();
        await(m_state->parts().connections.disconnect(project.domain, false));
        QCOMPARE(m_mac->calls, QStringList(u"/usr/sbin/diskutil unmount "_s + root));
        QCOMPARE(messages().last(), u"Unmounted %1."_s.arg(project.domain));

        await(m_state->parts().connections.connect(project));
        m_mac->calls.clear();
        m_mac->diskutilWorks = false;
        await(m_state->parts().connections.disconnect(project.domain, false));
        QCOMPARE(m_mac->calls,
                 (QStringList{u"/usr/sbin/diskutil unmount "_s + root, u"/sbin/umount "_s + root}));
        QVERIFY(m_state->connectedDomains().isEmpty());
    }

    void actions() {
        startOnMac();
        const Project project = this->project(0);
        m_state->perform(static_cast<int>(HoverTarget::safari), project.domain, true);
        await(m_state->parts().actions.perform(HoverTarget::ssh, project, false));
        await(m_state->parts().actions.perform(HoverTarget::database, project, false));
        m_state->fillSearchFromChrome();
        QTRY_COMPARE(m_state->searchText(), u"alpenhof.sandbox.test"_s);
        const QString open = u"/usr/bin/open "_s;
        QCOMPARE(m_mac->opened.size(), 3);
        QCOMPARE(m_mac->opened.at(0), open + u"https://%1/admin"_s.arg(project.domain));
        QCOMPARE(m_mac->opened.at(1), open + u"ssh://ssh%1@%2"_s.arg(project.webspaceID, project.domain));
        QVERIFY(m_mac->opened.at(2).startsWith(open + u"mysql://"_s));
    }

    void brokenSshfsIsExplained() {
        startOnMac();
        HostSystem host = m_state->host();
        QFile script(host.sshfsCandidates.first());
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\necho 'dyld: Library not loaded' >&2\nexit 6\n");
        script.close();
        await(m_state->parts().connections.connect(project(0)));
        QCOMPARE(m_state->guidance().value(u"title"_s).toString(), u"sshfs-Installation ist defekt"_s);
        m_state->answerGuidance(1);
        QCOMPARE(m_mac->opened, QStringList(u"/usr/bin/open /System/Applications/Utilities/Terminal.app"_s));
    }
};

QTEST_GUILESS_MAIN(TestMacOSFlow)
#include "tst_macos_flow.moc"
