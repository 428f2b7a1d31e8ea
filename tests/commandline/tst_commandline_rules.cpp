#include "CommandLine/Arguments.h"
#include "CommandLine/Listing.h"
#include "CommandLine/Opening.h"
#include "CommandLine/ProgramStart.h"
#include "CommandLine/ProjectChoice.h"

#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// What words mean, and what is printed.
class TestCommandLineRules : public QObject {
    Q_OBJECT

    static QString errorOf(const std::function<void()>& work) {
        try {
            work();
        } catch (const RequestError& error) {
            return QString::number(error.exitStatus()) + u' ' + error.description();
        }
        return {};
    }

  private Q_SLOTS:

    void wordsBecomeARequest_data() {
        QTest::addColumn<QString>("words");
        QTest::addColumn<QString>("request");
        QTest::addColumn<bool>("starts");
        const auto row = [](const char* words, const char* request, bool starts = true) {
            QTest::newRow(words) << QString::fromUtf8(words) << QString::fromUtf8(request) << starts;
        };
        row("list", R"({"command":"list","version":1})");
        row("list --json --no-start", R"({"command":"list","json":true,"version":1})", false);
        row("status", R"({"command":"status","version":1})", false);
        row("connect a.de", R"({"command":"connect","project":"a.de","version":1})");
        row("disconnect --all", R"({"command":"disconnect","version":1})", false);
        row("open a.de", R"({"command":"open","project":"a.de","target":"editor","version":1})");
        row("open --shell a.de", R"({"command":"open","project":"a.de","target":"shell","version":1})");
        row("search a.de -- --all", R"({"command":"search","project":"a.de","text":"--all","version":1})");
        row("HARVELLON:a.de --all", R"({"command":"show","text":"HARVELLON:a.de","version":1})");
    }

    void wordsBecomeARequest() {
        QFETCH(const QString, words);
        QFETCH(const QString, request);
        const Invocation invocation = Invocation::of(words.split(u' '));
        QCOMPARE(QString::fromUtf8(invocation.request.toLine()).trimmed(), request);
        QTEST(invocation.mayStart, "starts");
        QCOMPARE(Request::parse(request.toUtf8()), invocation.request);
    }

    void wrongUsageIsRefused() {
        for (const auto& [words, reason] : std::initializer_list<std::pair<QString, QString>>{
                 {u"mount a.de"_s, u"2 mount ist kein Befehl."_s},
                 {u"connect"_s, u"2 connect braucht ein Projekt."_s},
                 {u"connect "_s, u"2 connect braucht ein Projekt."_s},
                 {u"connect a.de b.de"_s, u"2 b.de passt hier nicht."_s},
                 {u"connect a.de --all"_s, u"2 --all passt hier nicht."_s},
                 {u"disconnect"_s, u"2 disconnect braucht ein Projekt oder --all."_s},
                 {u"disconnect --all a.de"_s, u"2 disconnect braucht ein Projekt oder --all."_s},
                 {u"open a.de --site --shell"_s, u"2 --shell passt hier nicht."_s},
                 {u"search a.de"_s, u"2 search braucht ein Projekt und einen Text."_s},
                 {u"search a.de "_s + QString(20'000, u'x'), u"2 Das ist zu lang."_s}})
            QCOMPARE(errorOf([list = words.split(u' ')] { Invocation::of(list); }), reason);
    }

    void whatIsNoRequestIsRefused() {
        const QString unclear = u"2 Die Anfrage ist nicht zu verstehen."_s;
        for (const QByteArray line :
             {"", "[]", "{}", "null", R"({"command":"list"})", R"({"command":"quit","version":1})",
              R"({"command":7,"version":1})", R"({"command":"open","target":"x","version":1})",
              R"({"command":"connect","project":["a"],"version":1})", R"({"command":"list","version":"1"})"})
            QCOMPARE(errorOf([&] { Request::parse(line); }), unclear);
        QCOMPARE(errorOf([] { Request::parse(QByteArray(Request::longest + 1, ' ')); }), unclear);
        QVERIFY(errorOf([] {
                    Request::parse(R"({"command":"new","version":2})");
                }).startsWith(u"3 Das laufende Harvellon Connect ist eine andere Version."_s));
        QCOMPARE(Answer::parse(R"({"version":2,"status":0,"error":"neuer"})"), (Answer{3, {}, u"neuer"_s}));
        QCOMPARE(Answer::parse(R"({"version":1,"error":"x"})"), std::nullopt);
    }

    void aWordMeansAProject_data() {
        QTest::addColumn<QString>("result");
        const auto row = [](const char* word, const char* result) {
            QTest::newRow(word) << QString::fromUtf8(result);
        };
        row("www.alp.de", "www.alp.de");
        row("ALP.de", "www.alp.de"); // also the beginning of another
        row("shop.b", "shop.bad.de");
        row("www.shop.b", "shop.bad.de");
        row("alp.det", "www.alp.dett.org");
        row("alp", "2 alp passt auf mehrere Projekte: www.alp.dett.org, www.alp.de");
        row("shopp", "2 Kein Projekt heißt shopp. Gemeint: shop.bad.de?");
        row("www.lap.de", "2 Kein Projekt heißt www.lap.de.");
        row("q", "2 Kein Projekt heißt q.");
        row("aalp.de", "2 Kein Projekt heißt aalp.de. Gemeint: www.alp.de?");
        row("\x1b[2J", "2 Kein Projekt heißt �[2J.");
    }

    void aWordMeansAProject() {
        QFETCH(const QString, result);
        QList<Project> projects(3);
        projects[0].domain = u"www.alp.dett.org"_s;
        projects[1].domain = u"www.alp.de"_s;
        projects[2].domain = u"shop.bad.de"_s;
        const QString word = QString::fromUtf8(QTest::currentDataTag());
        QString chosen;
        const QString error = errorOf([&] { chosen = chosenProject(projects, word).domain; });
        QCOMPARE(chosen + error, result);
    }

    void aLinkNamesADomain() {
        for (const auto& [link, domain] : std::initializer_list<std::pair<QString, QString>>{
                 {u"harvellon:www.a.de"_s, u"www.a.de"_s},
                 {u"HARVELLON://www.a.de/?connect=1&x#y"_s, u"www.a.de"_s},
                 {u"harvellon://root@a.de"_s, {}},
                 {u"harvellon://a.de:22"_s, {}},
                 {u"harvellon:///etc/passwd"_s, {}},
                 {u"harvellon:-oProxyCommand"_s, {}},
                 {u"harvellon:a.de%2fb"_s, {}},
                 {u"https://a.de"_s, {}}})
            QCOMPARE(domainInLink(link), domain);
    }

    void aTerminalObeysNoName() {
        const ListedProject project{u"a.de"_s, u"A\u001b[2J\u009b"_s, ListedProject::State::connected,
                                    u"/m"_s};
        QCOMPARE(listingOf({project}, false), u"a.de\tGemountet\tA\ufffd[2J\ufffd\n"_s);
        QCOMPARE(listingOf({project}, true),
                 u"[{\"domain\":\"a.de\",\"folder\":\"/m\",\"name\":\"A\ufffd[2J\ufffd\","
                 "\"state\":\"connected\"}]\n"_s);
    }

    void anOpenerOfBundlesEndsBeforeTheProgramAnswers() {
        const QTemporaryDir folder;
        const QString bundle = folder.path();
        QLocalServer program;
        for (const bool starts : {true, false}) {
            const QString script = starts ? u"mkdir \"$0/opened\""_s : u"exit 1"_s;
            const ProgramStart start{bundle + u"/Contents/MacOS/p"_s, {u"/bin/sh"_s, {u"-c"_s, script}}};
            std::chrono::milliseconds last{0};
            const auto listenLater = [&](std::chrono::milliseconds passed) {
                if (starts && passed > 200ms && QFile::exists(bundle + u"/opened"_s))
                    program.listen(bundle + u"/s"_s);
                return (last = passed) < 5s;
            };
            QCOMPARE(errorOf([&] { (void)startProgram(start, bundle + u"/s"_s, listenLater); }),
                     starts ? QString() : u"3 Harvellon Connect konnte nicht gestartet werden."_s);
            QVERIFY(last < 5s);
            program.close();
        }
    }

    void theLastLineTellsTheOutcome() {
        ActivityLog log;
        log.append(u"before"_s, ActivityLogLevel::error);
        const QUuid last = log.entries().constLast().id;
        QCOMPARE(outcomeSince(log, last), Answer{});
        log.append(u"not there"_s, ActivityLogLevel::warning);
        QCOMPARE(outcomeSince(log, last), (Answer{ExitStatus::failed, {}, u"not there"_s}));
        log.append(u"opened"_s, ActivityLogLevel::info);
        QCOMPARE(outcomeSince(log, last), (Answer{ExitStatus::done, {}, u"not there"_s}));
    }
};

QTEST_GUILESS_MAIN(TestCommandLineRules)
#include "tst_commandline_rules.moc"
