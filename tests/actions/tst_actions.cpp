#include "Actions/DirectoryWait.h"
#include "Actions/Rules/DatabaseCredentials.h"
#include "Actions/Rules/GrepOutput.h"
#include "Actions/Rules/SearchDomain.h"
#include "Actions/Rules/TerminalProgram.h"
#include "support/Await.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QtConcurrentRun>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestActions : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void folderThatAppearsInTimeIsFound() {
        QTemporaryDir parent;
        const QString folder = parent.filePath(u"web"_s);
        QTimer::singleShot(700, this, [&] { QDir().mkdir(folder); });
        QElapsedTimer timer;
        timer.start();
        const AskMount ask = [](const QString&, const std::function<bool()>& question) {
            return std::optional(QtConcurrent::run(question));
        };
        const QString domain = u"example.org"_s;
        QVERIFY(await(waitForDirectory(ask, domain, folder, 2s)));
        QVERIFY(timer.elapsed() >= 700);
        QVERIFY(!await(waitForDirectory(ask, domain, folder, 0s)));
        timer.restart();
        QVERIFY(!await(waitForDirectory(ask, domain, folder + u"/none"_s, 1s)));
        QVERIFY(timer.elapsed() >= 1000);
        QFile file(parent.filePath(u"file"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!await(waitForDirectory(ask, domain, file.fileName(), 1s)));
        const AskMount unmounted = [](const QString&, const std::function<bool()>&) {
            return std::optional<QFuture<bool>>();
        };
        QVERIFY(!await(waitForDirectory(unmounted, domain, folder, 2s)));

        QVERIFY(QFile::link(u"../elsewhere"_s, parent.filePath(u"link"_s)));
        QVERIFY(await(isBrokenLink(ask, domain, parent.filePath(u"link"_s), 1s)));
        QVERIFY(!await(isBrokenLink(ask, domain, folder, 1s)));
        QVERIFY(!await(isBrokenLink(ask, domain, folder + u"/none"_s, 1s)));
    }

    void hitsOfTheServersGrep_data() {
        QTest::addColumn<QByteArray>("output"); // with | for NUL
        QTest::addColumn<QStringList>("lines"); // with ? for what replaces a character
        const auto row = [](const char* name, const QByteArray& output, const QStringList& lines) {
            QTest::newRow(name) << output << lines;
        };
        row("two", "./a/b c.php|7:x y\n./d|12:\n", {u"/m/a/b c.php:7:x y"_s, u"/m/d:12:"_s});
        row("colons in the text", "./a|1:b:2:c\n", {u"/m/a:1:b:2:c"_s});
        row("colons in the name", "./a:9:b|1:c\n", {u"/m/a?9?b:1:c"_s});
        row("line feed in the name", "./a|1:x\n./b\n./c:1:y|2:z\n", {u"/m/a:1:x"_s, u"/m/b?./c?1?y:2:z"_s});
        row("controls", "./a\033[1m|1:b\033]0;c\007\td|e\r\n", {u"/m/a?[1m:1:b?]0;c?\td?e"_s});
        row("other ends of lines", "./a|1:b\u2028c\u2029d\u0085e\n", {u"/m/a:1:b?c?d?e"_s});
        row("turned direction", "./a\u202eb|1:\u202ec\ufeff\n", {u"/m/ab:1:c"_s});
        row("another character set", "./a|1:\xe4 b\n", {u"/m/a:1:? b"_s});
        row("out of the folder", "./../a|1:b\n./a/../../b|1:b\n/etc/passwd|1:b\n../a|1:b\n./|1:b\n", {});
        row("hidden way out", "./a/.\u202e./b|1:b\n", {});
        row("no line number", "./a|b:c\n./a|:c\n./a|-1:c\n./a|1\n./b|1:c\n", {u"/m/b:1:c"_s});
        row("cut off", "./a|1:b\n./c|2:d", {u"/m/a:1:b"_s});
        row("cut off in the name", "./a|1:b\n./c", {u"/m/a:1:b"_s});
        row("greeting of the server", "Welcome\n", {});
        row("nothing", "", {});
    }

    void hitsOfTheServersGrep() {
        QFETCH(QByteArray, output);
        QFETCH(QStringList, lines);
        QStringList shown;
        const SearchHits found = hitsIn(output.replace('|', '\0'), u"/m"_s);
        for (const SearchHit& hit : found.hits)
            shown.append(hit.asLine().replace(QChar::ReplacementCharacter, u'?'));
        QCOMPARE(shown, lines);
        QVERIFY(!found.more);
    }

    void hitsAreBounded() {
        const QByteArray smile = QByteArray("./a\0001:", 6) + QByteArray(399, 'x') + "\xf0\x9f\x98\x80\n";
        const SearchHits all = hitsIn(smile.repeated(3), u"/m"_s, 3);
        QCOMPARE(all.hits.size(), 3);
        QVERIFY(!all.more);
        QCOMPARE(all.hits.first().text, QString(399, u'x')); // half a character is no text
        QVERIFY(hitsIn(smile.repeated(4), u"/m"_s, 3).more);
    }

    void dotenv_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("value");
        QTest::newRow("plain") << u"DB_PASSWORD=a=b"_s << u"a=b"_s;
        QTest::newRow("quoted with a hash") << u"DB_PASSWORD=\"a#b\""_s << u"a#b"_s;
        QTest::newRow("comment behind") << u"DB_PASSWORD=a #comment"_s << u"a"_s;
        QTest::newRow("one quote") << u"DB_PASSWORD=\""_s << u"\""_s;
        QTest::newRow("mixed quotes") << u"DB_PASSWORD='a\""_s << u"'a\""_s;
        QTest::newRow("empty") << u"DB_PASSWORD="_s << u""_s;
        QTest::newRow("blanks and tabs") << u"\t DB_PASSWORD \t=\t 'x y' "_s << u"x y"_s;
        QTest::newRow("commented line first")
            << u"#DB_PASSWORD=no\n DB_PASSWORD=yes\nDB_PASSWORD=later"_s << u"yes"_s;
        QTest::newRow("other line breaks") << u"A=1\vB=2\fC\u0085D=3\u2028DB_PASSWORD=x\u2029E=4"_s << u"x"_s;
        QTest::newRow("carriage returns") << u"A=1\r\nDB_PASSWORD=x\r\n"_s << u"x"_s;
        QTest::newRow("other case") << u"db_password=x"_s << QString();
        QTest::newRow("longer name") << u"MY_DB_PASSWORD=x"_s << QString();
        QTest::newRow("no sign") << u"DB_PASSWORD"_s << QString();
    }

    void dotenv() {
        QFETCH(QString, text);
        QFETCH(QString, value);
        const std::optional<QString> found = dotenvValue(text, u"DB_PASSWORD"_s);
        QCOMPARE(found.has_value(), !value.isNull());
        QCOMPARE(found.value_or(QString()), value);
    }

    void settings_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("found"); // database/user/password
        QTest::newRow("array") << u"'dbname' => 'db1', 'user'=>'u1',\n 'password'   =>\n 'p&s'"_s
                               << u"db1/u1/p&s"_s;
        QTest::newRow("first wins") << u"'user' => 'a', 'user' => 'b', 'dbname' => 'd', 'password' => ''"_s
                                    << u"d/a/"_s;
        QTest::newRow("double quotes")
            << u"'dbname' => 'd', 'user' => 'u', \"password\" => \"p\""_s << QString();
        QTest::newRow("noise") << QString(3000000, u'\'') << QString();
    }

    void settings() {
        QFETCH(QString, text);
        QFETCH(QString, found);
        const std::optional<DatabaseCredentials> credentials = credentialsIn(text, ProjectType::harvellon);
        QCOMPARE(credentials.has_value(), !found.isNull());
        if (credentials)
            QCOMPARE(credentials->database + u'/' + credentials->user + u'/' + credentials->password, found);
    }

    void hosts_data() {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("host");
        QTest::newRow("www") << u"https://www.example.org/page"_s << u"example.org"_s;
        QTest::newRow("other sub-domain") << u"https://shop.example.org:8443?x"_s << u"shop.example.org"_s;
        QTest::newRow("capitals stay") << u"https://WWW.EXAMPLE.ORG"_s << u"WWW.EXAMPLE.ORG"_s;
        QTest::newRow("user") << u"https://www.a@b.example/"_s << u"b.example"_s;
        QTest::newRow("chrome") << u"chrome://newtab/"_s << u"newtab"_s;
        QTest::newRow("address") << u"http://[::1]:80/x"_s << u"::1"_s;
        QTest::newRow("blank page") << u"about:blank"_s << QString();
        QTest::newRow("nothing") << u""_s << QString();
        QTest::newRow("words") << u"example.org"_s << QString();
    }

    void hosts() {
        QFETCH(QString, address);
        QFETCH(QString, host);
        QCOMPARE(searchDomain(address).value_or(QString()), host);
    }

    void terminalIsFoundAsDesktopsDo() {
        QTemporaryDir folder;
        const auto install = [&folder](const char* name) {
            QFile file(folder.filePath(QLatin1String(name)));
            return file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        };
        const QStringList path{folder.path()};
        QCOMPARE(terminalProgram(path, {}), std::nullopt);
        QVERIFY(install("xterm"));
        QCOMPARE(terminalProgram(path, {})->arguments, QStringList{u"-e"_s});
        QVERIFY(install("gnome-terminal"));
        QVERIFY(QFile::link(folder.filePath(u"gnome-terminal"_s), folder.filePath(u"x-terminal-emulator"_s)));
        QCOMPARE(terminalProgram(path, {})->arguments, QStringList{u"--"_s}); // what the link leads to
        QCOMPARE(terminalProgram(path, u"xterm"_s)->executable, folder.filePath(u"xterm"_s));
        QVERIFY(install("xdg-terminal-exec"));
        QCOMPARE(terminalProgram(path, u"xterm"_s)->arguments, QStringList());
    }
};

QTEST_GUILESS_MAIN(TestActions)
#include "tst_actions.moc"
