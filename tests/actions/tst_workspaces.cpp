#include "Actions/VSCodeLauncher.h"
#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
class RecordingShell : public Shell {
  public:
    QStringList calls;
    bool hasWhich = true;

    QCoro::Task<ShellResult> run(QString executable, QStringList arguments,
                                 std::chrono::milliseconds) override {
        calls.append(executable + u'|' + arguments.join(u'|'));
        if (hasWhich && executable.endsWith("which"_L1))
            co_return ShellResult{1, {}, {}};
        throw ShellError::launchFailed(executable); // a missing editor must not fail the action
    }
};

const QByteArray usualWorkspace = "{\n"
                                  "    \"folders\": [\n"
                                  "        {\n"
                                  "            \"path\": \"/m/a\"\n"
                                  "        }\n"
                                  "    ],\n"
                                  "    \"settings\": {\n"
                                  "        \"editor.codeActionsOnSave\": {\n"
                                  "            \"source.fixAll\": \"never\",\n"
                                  "            \"source.organizeImports\": \"never\"\n"
                                  "        },\n"
                                  "        \"editor.formatOnSave\": false,\n"
                                  "        \"files.watcherExclude\": {\n"
                                  "            \"**/pdfs/**\": true\n"
                                  "        },\n"
                                  "        \"search.exclude\": {\n"
                                  "            \"**/pdfs/**\": true\n"
                                  "        }\n"
                                  "    }\n"
                                  "}\n";
} // namespace

/// The workspace files for the editor, and how it is started with them.
class TestWorkspaces : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void fileNames_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("name");
        QTest::newRow("usual") << u"www.example-1.org"_s << u"www.example-1.org"_s;
        QTest::newRow("umlaut and blank") << u"bücher laden.de"_s << u"b-cher-laden.de"_s;
        QTest::newRow("beyond the first plane") << u"a😀b"_s << u"a-b"_s;
        QTest::newRow("edges") << u"../-a_b-.."_s << u"a_b"_s;
        QTest::newRow("nothing left") << u".-.-"_s << u"project"_s;
        QTest::newRow("path") << u"../../etc/passwd"_s << u"etc-passwd"_s;
    }

    void fileNames() {
        QFETCH(QString, text);
        QFETCH(QString, name);
        QCOMPARE(sanitizedFileName(text), name);
    }

    void editorIsAskedInOrder() {
        QTemporaryDir folder;
        RecordingShell shell;
        HostSystem host = HostSystem::macOS(folder.path());
        host.temporaryFolder = folder.path();
        const QString workspace = folder.filePath(u"HarvellonConnect-VSCode/example.org.code-workspace"_s);
        const QString tree = u"/m/a \"b\""_s;
        await(VSCodeLauncher(host, shell).open(u"example.org"_s, tree));
        QCOMPARE(shell.calls, (QStringList{u"/usr/bin/which|code"_s,
                                           u"/usr/bin/open|-a|Visual Studio Code|"_s + workspace}));
        QFile file(workspace);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject content = QJsonDocument::fromJson(file.readAll()).object();
        QCOMPARE(content.value("folders"_L1)[0]["path"_L1].toString(), tree);
        QCOMPARE(content["settings"_L1]["editor.formatOnSave"_L1], QJsonValue(false));

        const QString insiders = folder.filePath(u"insiders"_s);
        QVERIFY(QFile::copy(workspace, insiders));
        host.editorLaunchers = {folder.filePath(u"missing"_s), insiders};
        host.temporaryFolder = u"/proc/nowhere"_s; // cannot be written
        for (const bool hasWhich : {true, false}) {
            shell.hasWhich = hasWhich;
            shell.calls.clear();
            await(VSCodeLauncher(host, shell).open(u"example.org"_s, tree));
            QCOMPARE(shell.calls.last(), insiders + u"|--new-window|--disable-workspace-trust|"_s + tree);
        }
    }

    /// What another user of the machine can do to a folder that everybody may write into.
    void workspaceFolderOfSomebodyElseIsNotUsed_data() {
        QTest::addColumn<QString>("prepare"); // $1 is the temporary folder, $2 a file of ours
        QTest::addColumn<bool>("used");
        const QString folder = u"$1/HarvellonConnect-VSCode"_s;
        const QString link = u"; ln -s $2 %1/example.org.code-workspace"_s.arg(folder);
        QTest::newRow("nothing there") << u"true"_s << true;
        QTest::newRow("no folder above") << u"rmdir $1"_s << true;
        QTest::newRow("readable by others") << u"mkdir -m 755 "_s + folder << true;
        QTest::newRow("writable by others") << u"mkdir -m 777 "_s + folder + link << false;
        QTest::newRow("replaceable by others") << u"chmod 1777 $1; mkdir -m 700 "_s + folder << false;
        QTest::newRow("link") << u"mkdir -m 700 $1/real; ln -s real "_s + folder << false;
        if (::geteuid() == 0)
            QTest::newRow("of another user")
                << u"mkdir -m 755 %1; chown 65534 %1"_s.arg(folder) + link << false;
    }

    void workspaceFolderOfSomebodyElseIsNotUsed() {
        QFETCH(QString, prepare);
        QFETCH(bool, used);
        const QTemporaryDir home;
        RecordingShell shell;
        HostSystem host = HostSystem::macOS(home.path());
        host.temporaryFolder = home.filePath(u"tmp"_s);
        QFile ours(home.filePath(u"ours"_s));
        QVERIFY(ours.open(QIODevice::ReadWrite) && QDir(home.path()).mkdir(u"tmp"_s));
        QCOMPARE(QProcess::execute(u"/bin/sh"_s, {u"-ec"_s, u"umask 022; "_s + prepare, u"sh"_s,
                                                  host.temporaryFolder, ours.fileName()}),
                 0);
        await(VSCodeLauncher(host, shell).open(u"example.org"_s, u"/m/a"_s));
        const QString folder = host.temporaryFolder + u"/HarvellonConnect-VSCode"_s;
        QCOMPARE(shell.calls.last().section(u'|', -1),
                 used ? folder + u"/example.org.code-workspace"_s : u"/m/a"_s);
        QCOMPARE(ours.readAll(), QByteArray());
        const QFile::Permissions others =
            QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
        if (used)
            QVERIFY(!(QFile::permissions(folder) & others));
    }

    void eachUserHasAWorkspaceFolderOfTheirOwn() {
        const QTemporaryDir homes;
        QStringList opened;
        for (const QString& name : {u"a"_s, u"b"_s}) {
            RecordingShell shell;
            QVERIFY(QDir(homes.path()).mkdir(name));
            HostSystem host = HostSystem::linuxDesktop(homes.filePath(name));
            host.editorOpen = {u"/bin/true"_s, {}};
            await(VSCodeLauncher(host, shell).open(u"example.org"_s, u"/m/"_s + name));
            opened.append(shell.calls.last().section(u'|', -1));
        }
        const QString workspace = u"/.cache/HarvellonConnect-VSCode/example.org.code-workspace"_s;
        QCOMPARE(opened,
                 (QStringList{homes.filePath(u"a"_s) + workspace, homes.filePath(u"b"_s) + workspace}));
    }

    void aQuietWorkspaceOnlyAddsSettings() {
        const QString tree = u"/m/a"_s;
        QCOMPARE(workspaceFor(tree, false), usualWorkspace);
        const auto settingsOf = [](const QByteArray& workspace) {
            return QJsonDocument::fromJson(workspace)["settings"_L1].toObject();
        };
        const QJsonObject usual = settingsOf(workspaceFor(tree, false));
        QJsonObject quiet = settingsOf(workspaceFor(tree, true));
        QCOMPARE(quiet.take("files.watcherExclude"_L1), (QJsonObject{{u"**"_s, true}}));
        QCOMPARE(quiet.take("git.autorefresh"_L1), QJsonValue(false));
        QCOMPARE(quiet.take("git.autofetch"_L1), QJsonValue(false));
        QCOMPARE(quiet.take("npm.autoDetect"_L1), QJsonValue(u"off"_s));
        QCOMPARE(quiet.take("search.followSymlinks"_L1), QJsonValue(false));
        QCOMPARE(quiet.take("typescript.disableAutomaticTypeAcquisition"_L1), QJsonValue(true));
        quiet["files.watcherExclude"_L1] = usual["files.watcherExclude"_L1];
        QCOMPARE(quiet, usual);
    }
};

QTEST_GUILESS_MAIN(TestWorkspaces)
#include "tst_workspaces.moc"
