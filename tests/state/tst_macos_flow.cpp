#include "StateFixture.h"

using namespace Qt::StringLiterals;

namespace {
/// Stands in for the macOS tools: records what they would open, and unmounts with the tools of Linux.
class MacShell : public DesktopShell {
  public:
    QStringList calls;
    ShellResult browserCheck;
    ShellResult browserAnswer{0, u"https://www.alpenhof.sandbox.test/x\n"_s, {}};

    QCoro::Task<ShellResult> run(QString executable, QStringList arguments,
                                 std::chrono::milliseconds limit) override {
        if (executable == "/usr/bin/which"_L1)
            co_return ShellResult{1, {}, {}};
        calls.append(executable + u' ' + arguments.join(u' '));
        if (executable == "/usr/bin/osascript"_L1)
            co_return arguments.last().startsWith("if "_L1) ? browserCheck : browserAnswer;
        if (executable == "/usr/sbin/diskutil"_L1)
            co_return ShellResult{1, {}, u"Unmount failed"_s};
        if (executable == "/sbin/umount"_L1) {
            const QStringList unmount{u"-u"_s, arguments.last()};
            co_return co_await DesktopShell::run(u"/usr/bin/fusermount3"_s, unmount, limit);
        }
        co_return co_await DesktopShell::run(executable, arguments, limit);
    }
};
} // namespace

/// Connect, disconnect and every action with the facts of macOS: the code that decides is the same, and runs
/// here.
class TestMacOSFlow : public StateFixture {
    Q_OBJECT

    /// An sshfs that takes the options of macOS, and one that does not start.
    QString sshfs(bool works) {
        QFile script(m_home->filePath(works ? u"sshfs"_s : u"broken"_s));
        if (!script.open(QIODevice::WriteOnly))
            qFatal("no script");
        script.write(works ? "#!/bin/sh\nfor word do shift; set -- \"$@\" \"$(printf %s \"$word\" | sed -e "
                             "'s/,defer_permissions,noappledouble,volname=[^,]*//')\"; done\nexec "
                             "/usr/bin/sshfs \"$@\"\n"
                           : "#!/bin/sh\necho 'dyld: Library not loaded' >&2\nexit 6\n");
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return script.fileName();
    }

    MacShell* startOnMac(bool sshfsWorks) {
        auto shell = std::make_unique<MacShell>();
        MacShell* const mac = shell.get();
        mac->browser = m_shell->browser;
        m_state.reset();
        m_shell = std::move(shell);
        HostSystem host = HostSystem::macOS(m_home->path());
        host.preferencesFile = m_home->filePath(u"preferences.ini"_s);
        host.temporaryFolder = m_home->path();
        host.usesKeyring = false;
        host.sshfsCandidates = {sshfs(sshfsWorks)};
        host.ssh = m_platform->ssh().binFolder() + u"/ssh"_s;
        start(host);
        // The recording opener starts no browser, so sign in before the records are cleared.
        signIn("erika");
        mac->opened.clear();
        mac->calls.clear();
        return mac;
    }

  private Q_SLOTS:

    void connectActAndDisconnect() {
        MacShell* const mac = startOnMac(true);
        const Project project = this->project(0);
        connectTo(0);
        const QString workspace =
            m_home->path() + u"/HarvellonConnect-VSCode/"_s + project.domain + u".code-workspace"_s;
        QCOMPARE(mac->opened, QStringList(u"/usr/bin/open -a Visual Studio Code "_s + workspace));
        mac->opened.clear();

        m_state->perform(static_cast<int>(HoverTarget::safari), project.domain, true);
        perform(HoverTarget::ssh, project);
        perform(HoverTarget::database, project);
        m_state->fillSearchFromChrome();
        QTRY_COMPARE(m_state->searchText(), u"alpenhof.sandbox.test"_s);
        const QString open = u"/usr/bin/open "_s;
        QCOMPARE(mac->opened.size(), 3);
        QCOMPARE(mac->opened.at(0), open + u"https://%1/admin"_s.arg(project.domain));
        QCOMPARE(mac->opened.at(1), open + u"ssh://ssh%1@%2"_s.arg(project.webspaceID, project.domain));
        QVERIFY(mac->opened.at(2).startsWith(open + u"mysql://"_s));

        mac->calls.clear();
        disconnectFrom(0);
        QCOMPARE(mac->calls.first(2), (QStringList{u"/usr/sbin/diskutil unmount "_s + mountPoint(0),
                                                   u"/sbin/umount "_s + mountPoint(0)}));
        QCOMPARE(messages().last(), u"Unmounted %1."_s.arg(project.domain));
        QVERIFY(m_state->connectedDomains().isEmpty());
    }

    void whatTheSystemRefusesIsTold() {
        MacShell* const mac = startOnMac(true);
        Refusals& refusals = *m_state->refusals();
        const auto ask = [&] {
            const auto lines = messages().size();
            m_state->fillSearchFromChrome();
            QTRY_VERIFY(messages().size() > lines);
        };
        mac->browserCheck = {1, {}, u"execution error: Google Chrome ist nicht gestartet. (-2700)"_s};
        ask();
        QCOMPARE(mac->calls.size(), 1); // the query would have started the browser
        QVERIFY(messages().last().endsWith(u"nicht gestartet. (-2700)"_s));
        QCOMPARE(refusals.text(), QString());

        mac->browserCheck = {};
        mac->browserAnswer = {1, {}, u"Keine Berechtigung für Apple-Events an Google Chrome. (-1743)"_s};
        ask();
        QVERIFY(refusals.text().contains(u"Google Chrome"_s));
        refusals.dismiss();
        QCOMPARE(refusals.text(), QString());
        refusals.openSettings();
        QVERIFY(mac->opened.last().endsWith(u"com.apple.preference.security?Privacy_Automation"_s));
        refusals.refuse(Permission::notifications, u"Alpenhof: getrennt."_s);
        QVERIFY(refusals.text().startsWith(u"Alpenhof: getrennt.\n"_s));
        refusals.dismiss();
        refusals.refuse(Permission::notifications); // the settings have looked
        QCOMPARE(refusals.text(), QString());
        refusals.allow(Permission::notifications);
        QVERIFY(refusals.standing().contains(u"Google Chrome"_s));

        mac->browserAnswer = {0, u"https://www.alpenhof.sandbox.test/x\n"_s, {}};
        ask();
        QCOMPARE(refusals.standing(), QString());
    }

    void brokenSshfsIsExplained() {
        MacShell* const mac = startOnMac(false);
        connectTo(project(0));
        QCOMPARE(m_state->guidance().value(u"title"_s).toString(), u"sshfs-Installation ist defekt"_s);
        m_state->answerGuidance(1);
        QCOMPARE(mac->opened, QStringList(u"/usr/bin/open /System/Applications/Utilities/Terminal.app"_s));
    }
};

QTEST_GUILESS_MAIN(TestMacOSFlow)
#include "tst_macos_flow.moc"
