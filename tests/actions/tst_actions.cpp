#include "ActionParts.h"

#include "Actions/ClearCache.h"
#include "Actions/OpenDatabase.h"
#include "Actions/OpenSite.h"
#include "Actions/Rules/DatabaseCredentials.h"
#include "Actions/Rules/GrepOutput.h"
#include "Actions/Rules/SearchDomain.h"
#include "Actions/Rules/ShellWords.h"
#include "Actions/Rules/TerminalProgram.h"
#include "Actions/ServerSearch.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTimer>
#include <QtConcurrentRun>

#include <unistd.h>

using namespace std::chrono_literals;
using Action = std::function<QCoro::Task<>(ActionContext&, Project, bool)>;
template <typename Expected>
using Cases = std::vector<std::pair<QString, Expected>>;

namespace {
QCoro::Task<> search(ActionContext& context, Project project, bool /*alternative*/) {
    try {
        co_await searchOnServer(context, project, u"x"_s);
    } catch (const SearchError& error) {
        context.report.log(error.description(), ActivityLogLevel::error);
    }
}
} // namespace

class TestActions : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void folderThatAppearsInTimeIsFound() {
        QTemporaryDir parent;
        const QString folder = parent.filePath(u"web"_s);
        QTimer::singleShot(700, this, [&] { QDir().mkdir(folder); });
        const AskMount ask = [](const QString&, const std::function<bool()>& question) {
            return std::optional(QtConcurrent::run(question));
        };
        const QString domain = u"example.org"_s;
        QVERIFY(await(waitForDirectory(ask, domain, folder, 2s)));
        write(parent.filePath(u"file"_s), {});
        QVERIFY(!await(waitForDirectory(ask, domain, parent.filePath(u"file"_s), 1s)));
        const AskMount unmounted = [](auto&, auto&) { return std::optional<QFuture<bool>>(); };
        QVERIFY(!await(waitForDirectory(unmounted, domain, folder, 2s)));

        QVERIFY(QFile::link(u"../elsewhere"_s, parent.filePath(u"link"_s)));
        QVERIFY(await(isBrokenLink(ask, domain, parent.filePath(u"link"_s), 1s)));
        QVERIFY(!await(isBrokenLink(ask, domain, folder, 1s)));
        QVERIFY(!await(isBrokenLink(ask, domain, folder + u"/none"_s, 1s)));
    }

    void commandLinesAreReadBackByAShell() {
        const QStringList words{u"it's $HOME"_s, {}, u"a\nb  *;`x`\\"_s, u"-müller"_s, u"s@x.example"_s};
        QProcess shell;
        shell.start(u"/bin/sh"_s, {u"-c"_s, u"printf '%s|' "_s + shellLine(words)});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(QString::fromUtf8(shell.readAllStandardOutput()), words.join(u'|') + u'|');
        QCOMPARE(shellLine({u"/usr/bin/ssh"_s, u"s@x.example"_s}), u"/usr/bin/ssh s@x.example"_s);
    }

    /// A directory that names no host, at each action that would hand the name on. Each row has a name that
    /// the program behind that action would understand differently.
    void hostileDomainsReachNoProgram() {
        struct Case {
            Action action;
            QString domain, told;
        };

        const std::vector<Case> cases{
            {openSite, u"example.org@evil.example"_s, u"Seite nicht geoeffnet: % ist kein Rechnername."_s},
            {openShell, u"-oProxyCommand=x"_s, u"SSH-Shell nicht moeglich: % ist kein Rechnername."_s},
            {copySiteAddress, u"example.org@evil.example"_s,
             u"Adresse nicht kopiert: % ist kein Rechnername."_s},
            {copyShellCommand, u"-oProxyCommand=x"_s, u"ssh-Befehl nicht kopiert: % ist kein Rechnername."_s},
            {openDatabase, u"a.example?ssh_port=1"_s,
             u"SSH-Verbindung fehlgeschlagen: Die Domain ist nicht zulässig."_s},
            {clearCache, u"example.org@127.0.0.1:9"_s, u"Ungueltige Cache-URL: https://%/?type=5820917364"_s},
            {search, u"a*.example"_s, u"% ist kein Rechnername."_s},
            {openSite, u"a\x1b[2J\u202e"_s,
             u"Seite nicht geoeffnet: a\ufffd[2J\ufffd ist kein Rechnername."_s}};
        for (const Case& each : cases) {
            RecordingShell shell;
            ActionParts parts(HostSystem::macOS(u"/h"_s), shell);
            const Project project{each.domain, std::nullopt, u"1"_s, u"/"_s, ProjectType::ssh};
            await(each.action(parts.context, project, false));
            QCOMPARE(parts.report.text, QString(each.told).replace(u'%', each.domain));
            QCOMPARE(shell.calls, QStringList());
        }
    }

    void hitsOfTheServersGrep() {
        // With | for NUL in the output, and ? for what replaces a character in the lines.
        const std::vector<std::pair<QByteArray, QStringList>> cases{
            {"./a/b c.php|7:x y\n./d|12:\n", {u"/m/a/b c.php:7:x y"_s, u"/m/d:12:"_s}},
            {"./a:9:b|1:b:2:c\n", {u"/m/a?9?b:1:b:2:c"_s}},
            {"./a|1:x\n./b\n./c:1:y|2:z\n", {u"/m/a:1:x"_s, u"/m/b?./c?1?y:2:z"_s}},
            {"./a\033[1m|1:b\033]0;c\007\td|e\r\n", {u"/m/a?[1m:1:b?]0;c?\td?e"_s}},
            {"./a|1:b\u2028c\u2029d\u0085e\n", {u"/m/a:1:b?c?d?e"_s}},
            {"./a\u202eb|1:\u202ec\ufeff\n", {u"/m/ab:1:c"_s}}, // no turned direction
            {"./../a|1:b\n./a/../../b|1:b\n/etc/passwd|1:b\n../a|1:b\n./|1:b\n", {}},
            {"./a/.\u202e./b|1:b\n", {}}, // a hidden way out
            {"./a|b:c\n./a|:c\n./a|-1:c\n./a|1\n./b|1:c\n", {u"/m/b:1:c"_s}},
            {"./a|1:b\n./c|2:d", {u"/m/a:1:b"_s}}, // cut off
            {"./a|1:b\n./c", {u"/m/a:1:b"_s}}};
        for (auto [output, lines] : cases) {
            QStringList shown;
            const SearchHits found = hitsIn(output.replace('|', '\0'), u"/m"_s);
            for (const SearchHit& hit : found.hits)
                shown.append(hit.asLine().replace(QChar::ReplacementCharacter, u'?'));
            QCOMPARE(shown, lines);
            QVERIFY(!found.more);
        }
    }

    void hitsAreBounded() {
        const QByteArray smile = QByteArray("./a\0001:", 6) + QByteArray(399, 'x') + "\xf0\x9f\x98\x80\n";
        const SearchHits all = hitsIn(smile.repeated(3), u"/m"_s, 3);
        QCOMPARE(all.hits.size(), 3);
        QVERIFY(!all.more);
        QCOMPARE(all.hits.first().text, QString(399, u'x')); // half a character is no text
        QVERIFY(hitsIn(smile.repeated(4), u"/m"_s, 3).more);
    }

    void dotenv() {
        const Cases<std::optional<QString>> cases{
            {u"DB_PASSWORD=a=b"_s, u"a=b"_s},
            {u"DB_PASSWORD=\"a#b\""_s, u"a#b"_s},
            {u"DB_PASSWORD=a #comment"_s, u"a"_s},
            {u"DB_PASSWORD=\""_s, u"\""_s},
            {u"DB_PASSWORD='a\""_s, u"'a\""_s},
            {u"DB_PASSWORD="_s, u""_s},
            {u"\t DB_PASSWORD \t=\t 'x y' "_s, u"x y"_s},
            {u"#DB_PASSWORD=no\n DB_PASSWORD=yes\nDB_PASSWORD=later"_s, u"yes"_s},
            {u"A=1\vB=2\fC\u0085D=3\u2028DB_PASSWORD=x\u2029E=4"_s, u"x"_s},
            {u"MY_DB_PASSWORD=x"_s, std::nullopt},
            {u"DB_PASSWORD"_s, std::nullopt}};
        for (const auto& [text, value] : cases)
            QCOMPARE(dotenvValue(text, u"DB_PASSWORD"_s), value);
    }

    void settings() {
        const auto found =
            credentialsIn(u"'dbname' => 'd', 'user'=>'u',\n 'password'   =>\n 'p&s', 'user' => 'b'"_s,
                          ProjectType::harvellon);
        QVERIFY(found);
        QCOMPARE(found->database + u'/' + found->user + u'/' + found->password, u"d/u/p&s"_s);
        QVERIFY(!credentialsIn(QString(3000000, u'\''), ProjectType::harvellon));
    }

    void hosts() {
        const Cases<QString> cases{{u"https://www.example.org/page"_s, u"example.org"_s},
                                   {u"https://shop.example.org:8443?x"_s, u"shop.example.org"_s},
                                   {u"https://WWW.EXAMPLE.ORG"_s, u"WWW.EXAMPLE.ORG"_s},
                                   {u"https://www.a@b.example/"_s, u"b.example"_s},
                                   {u"http://[::1]:80/x"_s, u"::1"_s},
                                   {u"about:blank"_s, {}},
                                   {u"example.org"_s, {}}};
        for (const auto& [address, host] : cases)
            QCOMPARE(searchDomain(address).value_or(QString()), host);
    }

    void terminalIsFoundAsDesktopsDo() {
        QTemporaryDir folder;
        const auto install = [&](const QString& name) { write(folder.filePath(name), {}, QFile::ExeOwner); };
        const QStringList path{folder.path()};
        QCOMPARE(terminalProgram(path, {}), std::nullopt);
        install(u"xterm"_s);
        QCOMPARE(terminalProgram(path, {})->arguments, QStringList{u"-e"_s});
        install(u"gnome-terminal"_s);
        QVERIFY(QFile::link(folder.filePath(u"gnome-terminal"_s), folder.filePath(u"x-terminal-emulator"_s)));
        QCOMPARE(terminalProgram(path, {})->arguments, QStringList{u"--"_s}); // what the link leads to
        QCOMPARE(terminalProgram(path, u"xterm"_s)->executable, folder.filePath(u"xterm"_s));
        install(u"xdg-terminal-exec"_s);
        QCOMPARE(terminalProgram(path, u"xterm"_s)->arguments, QStringList());
    }

    void fileNames() {
        const std::vector<std::pair<QString, QString>> cases{{u"www.example-1.org"_s, u"www.example-1.org"_s},
                                                             {u"bücher laden.de"_s, u"b-cher-laden.de"_s},
                                                             {u"a😀b"_s, u"a-b"_s},
                                                             {u".-.-"_s, u"project"_s},
                                                             {u"../../etc/passwd-."_s, u"etc-passwd"_s}};
        for (const auto& [text, name] : cases)
            QCOMPARE(sanitizedFileName(text), name);
    }

    void editorIsAskedInOrder() {
        QCOMPARE(HostSystem::linuxDesktop(u"/h"_s).temporaryFolder, u"/h/.cache"_s); // the user's alone
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
    void workspaceFolderOfSomebodyElseIsNotUsed() {
        const QString theirs = u"$1/HarvellonConnect-VSCode"_s;
        const QString link = u"; ln -s $2 %1/example.org.code-workspace"_s.arg(theirs);
        Cases<bool> cases{// $1 is the temporary folder, $2 a file of ours
                          {u"rmdir $1"_s, true},
                          {u"mkdir -m 755 "_s + theirs, true}, // readable by others
                          {u"mkdir -m 777 "_s + theirs + link, false},
                          {u"chmod 1777 $1; mkdir -m 700 "_s + theirs, false}, // replaceable by others
                          {u"mkdir -m 700 $1/real; ln -s real "_s + theirs, false}};
        if (::geteuid() == 0)
            cases.push_back({u"mkdir -m 755 %1; chown 65534 %1"_s.arg(theirs) + link, false});
        for (const auto& [prepare, used] : cases) {
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
    }

    void workspacesSettings() {
        const auto parsed = [](QByteArray text) {
            return QJsonDocument::fromJson(text.replace('\'', '"')).object();
        };
        const QJsonObject usual = parsed(
            "{'folders': [{'path': '/m/a'}], 'settings': {'editor.codeActionsOnSave':"
            "{'source.fixAll': 'never', 'source.organizeImports': 'never'}, 'editor.formatOnSave': false,"
            "'files.watcherExclude': {'**/pdfs/**': true}, 'search.exclude': {'**/pdfs/**': true}}}");
        const QString tree = u"/m/a"_s;
        QCOMPARE(parsed(workspaceFor(tree, false)), usual);
        const QJsonObject added =
            parsed("{'files.watcherExclude': {'**': true}, 'git.autorefresh': false, 'git.autofetch': false,"
                   "'npm.autoDetect': 'off', 'search.followSymlinks': false,"
                   "'typescript.disableAutomaticTypeAcquisition': true}");
        QJsonObject settings = usual["settings"_L1].toObject();
        for (auto each = added.begin(); each != added.end(); ++each)
            settings[each.key()] = each.value();
        QCOMPARE(parsed(workspaceFor(tree, true))["settings"_L1].toObject(), settings);
    }
};

QTEST_GUILESS_MAIN(TestActions)
#include "tst_actions.moc"
