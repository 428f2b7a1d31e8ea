#include "ActionParts.h"

#include "Actions/OpenDatabase.h"
#include "Actions/ServerSearch.h"
#include "sandbox/Sandbox.h"
#include "sandbox/ssh/SlowLine.h"
#include "support/Leftovers.h"

#include <QProcess>

#include <algorithm>

/// What actions ask the server, over real ssh: searches by a real grep, and the database, whose address goes
/// to the desktop's own xdg-mime and xdg-open.
class TestOnTheServer : public QObject {
    Q_OBJECT

    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    QTemporaryDir m_home;
    Shell m_shell;
    std::unique_ptr<ActionParts> m_parts;
    Project m_project;

    SearchHits search(const QString& pattern) {
        return await(searchOnServer(m_parts->context, m_project, pattern));
    }

    QString failure(const QString& pattern) {
        try {
            search(pattern);
            return u"none"_s;
        } catch (const SearchError& error) {
            return error.description();
        }
    }

    /// A program that writes down what it is given.
    void install(const QString& program, const QByteArray& end) const {
        const QByteArray record = QFile::encodeName(m_home.filePath(program) + u".got"_s);
        write(m_home.filePath(program), "#!/bin/sh\nprintf %s \"$1\" >" + record + '\n' + end + '\n',
              QFile::ExeOwner);
    }

    [[nodiscard]] QByteArray gotBy(const QString& program) const {
        QFile file(m_home.filePath(program) + u".got"_s);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

  private Q_SLOTS:

    void initTestCase() {
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, true});
        QVERIFY(m_platform->hasSsh());
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.filePath(u"data"_s)));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(u"config"_s)));
        qputenv("BROWSER", QFile::encodeName(m_home.filePath(u"browser"_s)));
        HostSystem host = HostSystem::linuxDesktop(m_home.path());
        host.ssh = m_platform->ssh().binFolder() + u"/ssh"_s;
        host.privateFolder = m_home.path();
        host.socketFolder = m_home.filePath(u"s"_s);
        m_parts = std::make_unique<ActionParts>(host, m_shell);
        const sandbox::HostedProject hosted = m_platform->people().at(0).projects.at(0);
        m_project = {hosted.domain, hosted.name, QString::number(hosted.webspaceID),
                     m_platformFolder.filePath(u"a tree's \"%3\""_s), ProjectType::ssh};
    }

    void init() {
        for (const QString& folder :
             {m_project.path, m_home.filePath(u"data"_s), m_home.filePath(u"config"_s)})
            QDir(folder).removeRecursively();
        for (const QString& program : {u"client"_s, u"browser"_s})
            QFile::remove(m_home.filePath(program + u".got"_s));
        QVERIFY(QDir().mkpath(m_project.path));
    }

    void cleanupTestCase() {
        await(m_parts->shared.close());
        QTRY_COMPARE(processesWith(m_home.path()), QList<pid_t>());
    }

    void patternsAreFoundToTheLetter() {
        write(m_project.path + u"/file"_s, "b1 a.b xit");
        for (const QString& pattern :
             {u"needle"_s, u"-n"_s, u"--include=x"_s, u"it's \"quoted\" `id` $(id) $HOME"_s, u"a.*[b] \\1"_s,
              u"%1 %2 %5"_s, u"ä 😀"_s, u"!x; exit 9 #"_s, u"\t\r"_s, QString(1000, u'x')}) {
            write(m_project.path + u"/sub folder/file"_s, "other\n>" + pattern.toUtf8() + "<\nother\n");
            const SearchHits found = search(pattern);
            QVERIFY2(found.hits.size() == 1, qPrintable(pattern));
            QCOMPARE(found.hits.last().path, u"/m/sub folder/file"_s);
            QCOMPARE(found.hits.last().line, 2);
            QVERIFY(!found.more && !found.incomplete);
        }
    }

    void whatIsNoSourceIsLeftOut() {
        for (const QString& path :
             {u"/.git/a"_s, u"/a/node_modules/b"_s, u"/node_modules.txt"_s, u"/a:7:b"_s, u"/a\n./c:1:d"_s})
            write(m_project.path + path, "needle\n");
        write(m_project.path + u"/picture"_s, QByteArray("needle\0\n", 8));
        write(m_project.path + u"/latin1"_s, "\xe4 needle\n");
        write(m_platformFolder.filePath(u"outside"_s), "needle\n");
        QVERIFY(QFile::link(m_platformFolder.filePath(u"outside"_s), m_project.path + u"/link"_s));
        QStringList lines;
        const SearchHits found = search(u"needle"_s);
        for (const SearchHit& hit : found.hits)
            lines.append(hit.asLine().replace(QChar::ReplacementCharacter, u'?'));
        lines.sort();
        QCOMPARE(lines, (QStringList{u"/m/a?./c?1?d:1:needle"_s, u"/m/a?7?b:1:needle"_s,
                                     u"/m/latin1:1:? needle"_s, u"/m/node_modules.txt:1:needle"_s}));
        QVERIFY(search(u"Needle"_s).hits.isEmpty());
    }

    void manyAndLongLinesAreBounded() {
        write(m_project.path + u"/min.js"_s, QByteArray("needle") + QByteArray(3'000'000, 'x') + '\n');
        write(m_project.path + u"/many"_s, QByteArray("needle\n").repeated(1500));
        SearchHits found = search(u"needle"_s);
        QCOMPARE(found.hits.size(), 1000);
        QVERIFY(found.more);
        QVERIFY(std::all_of(found.hits.begin(), found.hits.end(),
                            [](const SearchHit& hit) { return hit.text.size() <= 400; }));
        write(m_project.path + u"/many"_s,
              (QByteArray("needle") + QByteArray(9000, 'x') + '\n').repeated(900));
        found = search(u"needle"_s);
        QVERIFY(found.more); // one megabyte
        QVERIFY2(found.hits.size() > 200 && found.hits.size() < 230,
                 qPrintable(QString::number(found.hits.size())));
    }

    void whatCannotBeSoughtIsRefused() {
        const QString oneLine = u"Gesucht wird ein Text von 1 bis 1000 Zeichen in einer Zeile."_s;
        for (const QString& pattern : {u""_s, u"a\nb"_s, u"a"_s + QChar(QChar::Null), QString(1001, u'x')})
            QCOMPARE(failure(pattern), oneLine);
        QDir(m_project.path).removeRecursively();
        QCOMPARE(failure(u"x"_s), u"Der Ordner des Projekts ist auf dem Server nicht zugänglich."_s);
        m_platform->ssh().acceptKey(false);
        QVERIFY(failure(u"x"_s).startsWith(u"SSH-Verbindung fehlgeschlagen: "_s));
        m_platform->ssh().acceptKey(true);
        m_parts->mounted = false;
        QCOMPARE(failure(u"x"_s), m_project.domain + u" ist nicht verbunden."_s);
        m_parts->mounted = true;
    }

    void statusOfTheServersGrepComesThrough() {
        const QString bin = m_platformFolder.filePath(u"bin"_s);
        const std::vector<std::pair<QByteArray, int>> cases{
            // What grep does when it is asked in earnest; empty: it knows fewer options.
            {"printf './a\\0001:b\\n'; exit 2", 2}, // hits, and unreadable files
            {"exit 1", 1},
            {"yes; kill -s PIPE $$", 141}, // too much
            {"exit 124", 124},             // too long
            {"", 6}};
        for (const auto& [grep, status] : cases) {
            write(bin + u"/grep"_s,
                  "#!/bin/sh\n[ $# -gt 0 ] && case \"$*\" in *.git*) " + grep + ";; esac\nexit " +
                      (grep.isEmpty() ? "1" : "0") + "\n",
                  QFile::ExeOwner);
            const QString command =
                u"PATH=%1:/usr/bin:/bin; "_s.arg(bin) + searchCommand(m_project.path, u"x"_s);
            QCOMPARE(QProcess::execute(u"/bin/sh"_s, {u"-c"_s, command}), status);
        }
    }

    void aSharedConnectionIsUsedUntilItFreezes() {
        write(m_project.path + u"/file"_s, "needle\n");
        sandbox::SlowLine line(m_platform->ssh().port());
        m_platform->ssh().letClientsUse(line.port());
        const QString login = m_project.sshLogin();
        m_parts->shared.open(login);
        const QStringList nothing{u"true"_s};
        QTRY_VERIFY(await(m_parts->shared.run(login, nothing)));
        QCOMPARE(search(u"needle"_s).hits.size(), 1);
        line.freezeConnections();
        QCOMPARE(search(u"needle"_s).hits.size(), 1);
        await(m_parts->shared.close());
        m_platform->ssh().letClientsUse(m_platform->ssh().port());
    }

    void passwordReachesTheDatabaseClientAlone_data() {
        QTest::addColumn<QByteArray>("client"); // how it ends; empty: there is none
        QTest::addColumn<bool>("registered");
        QTest::newRow("client that fails") << QByteArray("exit 1") << true;
        QTest::newRow("client without its program") << QByteArray("gone") << true;
        QTest::newRow("none") << QByteArray() << false;
        QTest::newRow("uninstalled") << QByteArray() << true;
    }

    void passwordReachesTheDatabaseClientAlone() {
        QFETCH(QByteArray, client);
        QFETCH(bool, registered);
        const QString program = m_home.filePath(u"client"_s);
        install(u"browser"_s, "exit 0");
        install(u"client"_s, client);
        if (client == "gone")
            QVERIFY(QFile::remove(program));
        if (!client.isEmpty())
            write(m_home.filePath(u"data/applications/client.desktop"_s),
                  "[Desktop Entry]\nType=Application\nName=Client\nMimeType=x-scheme-handler/mysql;\nExec=" +
                      QFile::encodeName(program) + " %u\n");
        if (registered)
            write(m_home.filePath(u"config/mimeapps.list"_s),
                  "[Default Applications]\nx-scheme-handler/mysql=client.desktop\n");
        await(openDatabase(m_parts->context, m_project, false));
        const bool reached = client == "exit 1";
        QTRY_COMPARE(gotBy(u"client"_s).startsWith("mysql://"), reached);
        QTRY_COMPARE(processesWith(m_home.path()), QList<pid_t>()); // the opener has the address as argument
        QCOMPARE(gotBy(u"client"_s).isEmpty(), !reached);
        QCOMPARE(gotBy(u"browser"_s), QByteArray());
        const QString told = client.isEmpty() ? u"Kein Programm öffnet Datenbank-Adressen (mysql:). "
                                                "Bitte einen Datenbank-Client installieren."_s
                                              : u"Oeffne %1 DB in Sequel Ace ("_s.arg(m_project.domain);
        QVERIFY2(m_parts->report.text.startsWith(told), qPrintable(m_parts->report.text));
    }

    /// As when the client is uninstalled between the question and the opening.
    void openerOfSecretsKnowsNoBrowser() {
        const HostSystem& host = m_parts->host;
        install(u"browser"_s, "exit 0");
        const auto open = [&](const ExternalCommand& opener, const QString& address) {
            const QStringList arguments = opener.argumentsFor(address);
            return await(m_shell.run(opener.executable, arguments, Shell::noLimit)).exitCode;
        };
        QVERIFY(open(host.secretOpener, u"mysql://secret"_s) != 0);
        QCOMPARE(gotBy(u"browser"_s), QByteArray());
        QCOMPARE(open(host.opener, u"mysql://test"_s), 0);
        QCOMPARE(gotBy(u"browser"_s), QByteArray("mysql://test"));
    }
};

QTEST_GUILESS_MAIN(TestOnTheServer)
#include "tst_on_the_server.moc"
