#include "ActionParts.h"

#include "Actions/OpenFolder.h"
#include "Actions/OpenSite.h"
#include "Actions/Openers.h"
#include "Actions/Programs/OwnCommand.h"

#include <QProcess>

/// The user's own editor and terminal, by the facts of both desktops.
class TestPrograms : public QObject {
    Q_OBJECT

    const QByteArray m_path = qgetenv("PATH");
    std::unique_ptr<QTemporaryDir> m_folder;
    RecordingShell m_shell;

    /// `files` are all programs that there are. %1 stands for their folder.
    [[nodiscard]] std::unique_ptr<ActionParts> desktopWith(const QStringList& files, bool mac) {
        m_shell.calls.clear();
        m_folder = std::make_unique<QTemporaryDir>();
        const QString folder = m_folder->path();
        for (const QString& file : files)
            write(folder + u'/' + file, "#!/bin/sh\n", QFile::ExeOwner);
        qputenv("PATH", QFile::encodeName(folder));
        HostSystem host = mac ? HostSystem::macOS(folder) : HostSystem::linuxDesktop(folder);
        host.programFolders = {folder};
        host.temporaryFolder = folder + u"/cache"_s;
        return std::make_unique<ActionParts>(host, m_shell);
    }

    [[nodiscard]] QString filled(QString text) const { return text.replace(u"%1"_s, m_folder->path()); }

  private Q_SLOTS:

    void cleanup() { qputenv("PATH", m_path); }

    void editorsGetTheFolderAsTheyTakeIt() {
        struct Case {
            bool mac;
            QStringList files;
            QString key, line, call, name;
        };

        const QString workspace =
            u"|--new-window|--disable-workspace-trust|%1/cache/HarvellonConnect-VSCode/a.org.code-workspace"_s;
        const std::vector<Case> cases{
            {false, {u"phpstorm"_s}, u"phpstorm"_s, {}, u"%1/phpstorm|/m/a b"_s, u"PhpStorm"_s},
            {false, {u"codium"_s}, u"vscodium"_s, {}, u"%1/codium"_s + workspace, u"VSCodium"_s},
            {false, {u"nvim"_s, u"xterm"_s}, u"neovim"_s, {}, u"%1/xterm|-e|%1/nvim|/m/a b"_s, u"Neovim"_s},
            {false, {u"my ed"_s}, u"own"_s, u"\"%1/my ed\" -n"_s, u"%1/my ed|-n|/m/a b"_s, u"%1/my ed"_s},
            {false, {u"ed"_s}, u"own"_s, u"ed --in=%f 'x"_s, u"%1/ed|--in=/m/a b|'x"_s, u"ed"_s},
            {true, {u"Zed.app/x"_s}, u"zed"_s, {}, u"/usr/bin/open|-a|%1/Zed.app|/m/a b"_s, u"Zed"_s},
            {true,
             {u"Cursor.app/Contents/Resources/app/bin/cursor"_s},
             u"cursor"_s,
             {},
             u"%1/Cursor.app/Contents/Resources/app/bin/cursor"_s + workspace,
             u"Cursor"_s}};
        for (const Case& each : cases) {
            const std::unique_ptr<ActionParts> parts = desktopWith(each.files, each.mac);
            parts->programs.editor = u"another"_s;
            parts->programs.editorsOfProjects = {{u"a.org"_s, each.key}};
            parts->programs.editorCommand = filled(each.line);
            const QString domain = u"a.org"_s;
            QCOMPARE(await(openEditor(parts->context, domain, u"/m/a b"_s)), filled(each.name));
            QCOMPARE(m_shell.calls, QStringList(filled(each.call)));
        }
    }

    void missingProgramsAreTold() {
        const std::vector<std::array<QString, 3>> cases{
            {u"phpstorm"_s, {}, u"PhpStorm wurde nicht gefunden. "_s},
            {u"own"_s, u"/no/ed -n"_s, u"/no/ed wurde nicht gefunden. "_s},
            {u"own"_s, u" "_s, u"Das Programm dafür ist noch nicht angegeben"_s},
            {u"later"_s, {}, u"later wurde nicht gefunden. "_s}};
        for (const auto& [key, line, told] : cases) {
            const std::unique_ptr<ActionParts> parts = desktopWith({u"code"_s, u"xterm"_s}, false);
            parts->programs.editor = parts->programs.terminal = key;
            parts->programs.editorCommand = parts->programs.terminalCommand = line;
            QVERIFY(!await(openEditor(parts->context, u"a.org"_s, u"/m"_s)));
            QVERIFY2(parts->report.text.startsWith(told), qPrintable(parts->report.text));
            parts->report.text.clear();
            const QString terminal = key == u"phpstorm"_s ? u"phpstorm wurde nicht gefunden. "_s : told;
            QVERIFY(!openTerminal(parts->context, {u"ssh"_s}));
            QVERIFY2(parts->report.text.startsWith(terminal), qPrintable(parts->report.text));
            QCOMPARE(m_shell.calls, QStringList());
        }
    }

    void terminalsRunTheCommand() {
        struct Case {
            QString key, line, call, empty;
        };

        const std::vector<Case> cases{
            {u"kitty"_s, {}, u"%1/kitty|"_s, u"%1/kitty|"_s},
            {u"gnome-terminal"_s, {}, u"%1/gnome-terminal|--|"_s, u"%1/gnome-terminal|"_s},
            {u"own"_s, u"t"_s, u"%1/t|-e|"_s, u"%1/t|"_s},
            {u"own"_s, u"t -x %c"_s, u"%1/t|-x|"_s, u"%1/t|-x"_s},
            {u"own"_s, u"t --run=%c -n"_s, u"%1/t|--run=ssh 'it'\\''s'|-n"_s, u"%1/t|--run=|-n"_s}};
        for (const Case& each : cases) {
            const std::unique_ptr<ActionParts> parts =
                desktopWith({u"kitty"_s, u"gnome-terminal"_s, u"t"_s}, false);
            parts->programs.terminal = each.key;
            parts->programs.terminalCommand = each.line;
            QVERIFY(openTerminal(parts->context, {u"ssh"_s, u"it's"_s}));
            const QString words =
                each.call.endsWith(u'|') || each.line.endsWith(u"%c"_s) ? u"ssh|it's"_s : QString();
            QCOMPARE(m_shell.calls.takeLast(), filled(each.call) + words);
            QVERIFY(openTerminal(parts->context));
            QCOMPARE(m_shell.calls.takeLast(), filled(each.empty));
        }
    }

    /// The program for ssh addresses is not asked for a shell in the chosen terminal; a bundle runs a script.
    void bundledTerminalsRunAScript() {
        const std::unique_ptr<ActionParts> parts = desktopWith({u"iTerm.app/x"_s}, true);
        parts->programs.terminal = u"iterm"_s;
        parts->host.ssh = u"/bin/echo"_s;
        const Project project{u"a.org"_s, {}, u"7"_s, u"/"_s, ProjectType::ssh};
        await(openShell(parts->context, project, false));
        QVERIFY(parts->report.text.startsWith(u"Das Terminal wurde nicht geöffnet: "_s));
        QVERIFY(QDir().mkdir(parts->host.temporaryFolder));
        await(openShell(parts->context, project, false));
        const QStringList call = m_shell.calls.takeLast().split(u'|');
        QCOMPARE(call.first(3), (QStringList{u"/usr/bin/open"_s, u"-a"_s, filled(u"%1/iTerm.app"_s)}));
        qputenv("PATH", m_path);
        QProcess script;
        script.start(call.last(), QStringList());
        QVERIFY(script.waitForFinished());
        QCOMPARE(script.readAllStandardOutput(), QByteArray("ssh7@a.org\n"));
        QVERIFY(!QFile::exists(call.last()));
    }
};

QTEST_GUILESS_MAIN(TestPrograms)
#include "tst_programs.moc"
