#include "Actions/ServerSearch.h"

#include "Actions/VSCodeLauncher.h"
#include "System/Reporter.h"
#include "System/Shell.h"
#include "System/Ssh/SharedConnections.h"
#include "sandbox/Sandbox.h"
#include "sandbox/ssh/ProjectTrees.h"
#include "sandbox/ssh/SlowLine.h"
#include "support/Await.h"
#include "support/Leftovers.h"

#include <QDir>
#include <QElapsedTimer>
#include <QNetworkAccessManager>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
class SilentReporter : public Reporter {
    void log(const QString& /*message*/, ActivityLogLevel /*level*/) override {}

    void setAccountError(std::optional<QString> /*error*/) override {}

    void setLastError(std::optional<QString> /*error*/) override {}
};

void write(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}
} // namespace

/// Searches by a real grep, over real ssh.
class TestServerSearch : public QObject {
    Q_OBJECT

    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    QTemporaryDir m_home;
    HostSystem m_host;
    Shell m_shell;
    QNetworkAccessManager m_network;
    SilentReporter m_report;
    std::unique_ptr<VSCodeLauncher> m_editor;
    std::unique_ptr<SharedConnections> m_shared;
    Project m_project;
    bool m_mounted = true;

    [[nodiscard]] ActionContext context() {
        return {.host = m_host,
                .shell = m_shell,
                .network = m_network,
                .report = m_report,
                .editor = *m_editor,
                .shared = *m_shared,
                .mountPoint =
                    [this](const QString&) {
                        return m_mounted ? std::optional(u"/m"_s) : std::optional<QString>();
                    },
                .ask = {},
                .warmUp = {},
                .offerLinks = {},
                .connect = {},
                .disconnect = {},
                .copyText = {}};
    }

    SearchHits search(const QString& pattern) {
        const ActionContext context = this->context();
        return await(searchOnServer(context, m_project, pattern));
    }

    QStringList lines(const QString& pattern) {
        QStringList lines;
        const SearchHits found = search(pattern);
        for (const SearchHit& hit : found.hits)
            lines.append(hit.asLine().replace(QChar::ReplacementCharacter, u'?'));
        lines.sort();
        return lines;
    }

    QString failure(const QString& pattern) {
        try {
            search(pattern);
            return u"none"_s;
        } catch (const SearchError& error) {
            return error.description();
        }
    }

  private Q_SLOTS:

    void initTestCase() {
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, true});
        QVERIFY(m_platform->hasSsh());
        m_host = HostSystem::linuxDesktop(m_home.path());
        m_host.ssh = m_platform->ssh().binFolder() + u"/ssh"_s;
        m_host.privateFolder = m_home.path();
        m_host.socketFolder = m_home.filePath(u"s"_s);
        m_editor = std::make_unique<VSCodeLauncher>(m_host, m_shell);
        m_shared = std::make_unique<SharedConnections>(m_host, m_shell);
        const sandbox::HostedProject hosted = m_platform->people().at(0).projects.at(0);
        m_project = {hosted.domain, hosted.name, QString::number(hosted.webspaceID),
                     m_platformFolder.filePath(u"a tree's \"%3\""_s), ProjectType::ssh};
    }

    void init() { QDir(m_project.path).removeRecursively(), QDir().mkpath(m_project.path); }

    void cleanupTestCase() {
        await(m_shared->close());
        QTRY_COMPARE(processesWith(m_home.path()), QList<pid_t>());
    }

    void patternsAreFoundToTheLetter_data() {
        QTest::addColumn<QString>("pattern");
        for (const QString& pattern :
             {u"needle"_s, u"-n"_s, u"--include=x"_s, u"it's \"quoted\" `id` $(id) $HOME"_s, u"a.*[b] \\1"_s,
              u"%1 %2 %5"_s, u"ä 😀"_s, u"!x; exit 9 #"_s, u"\t\r"_s, u" "_s, QString(1000, u'x')})
            QTest::newRow(qPrintable(pattern.left(20))) << pattern;
    }

    void patternsAreFoundToTheLetter() {
        QFETCH(QString, pattern);
        write(m_project.path + u"/sub folder/file"_s, "other\n>" + pattern.toUtf8() + "<\nother\n");
        write(m_project.path + u"/file"_s, "b1 a.b xit");
        const SearchHits found = search(pattern);
        const QString path = u"/m/sub folder/file"_s;
        QCOMPARE(found.hits.size(), pattern == u' ' ? 2 : 1);
        QCOMPARE(found.hits.last().path, path);
        QCOMPARE(found.hits.last().line, 2);
        QVERIFY(!found.more && !found.incomplete);
    }

    void whatIsNoSourceIsLeftOut() {
        for (const QString& path :
             {u"/.git/a"_s, u"/a/node_modules/b"_s, u"/node_modules.txt"_s, u"/a:7:b"_s, u"/a\n./c:1:d"_s})
            write(m_project.path + path, "needle\n");
        write(m_project.path + u"/picture"_s, QByteArray("needle\0\n", 8));
        write(m_project.path + u"/latin1"_s, "\xe4 needle\n");
        write(m_platformFolder.filePath(u"outside"_s), "needle\n");
        QVERIFY(QFile::link(m_platformFolder.filePath(u"outside"_s), m_project.path + u"/link"_s));
        QCOMPARE(lines(u"needle"_s),
                 (QStringList{u"/m/a?./c?1?d:1:needle"_s, u"/m/a?7?b:1:needle"_s, u"/m/latin1:1:? needle"_s,
                              u"/m/node_modules.txt:1:needle"_s}));
        QVERIFY(lines(u"Needle"_s).isEmpty());
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
        m_mounted = false;
        QCOMPARE(failure(u"x"_s), m_project.domain + u" ist nicht verbunden."_s);
        m_mounted = true;
    }

    void statusOfTheServersGrepComesThrough_data() {
        QTest::addColumn<QByteArray>("grep"); // what it does when it is asked in earnest
        QTest::addColumn<int>("status");
        QTest::newRow("hits") << QByteArray("printf './a\\0001:b\\n'; exit 0") << 0;
        QTest::newRow("no hits") << QByteArray("exit 1") << 1;
        QTest::newRow("unreadable files") << QByteArray("printf './a\\0001:b\\n'; exit 2") << 2;
        QTest::newRow("too much") << QByteArray("yes; kill -s PIPE $$") << 141;
        QTest::newRow("too long") << QByteArray("exit 124") << 124;
        QTest::newRow("knows fewer options") << QByteArray() << 6;
    }

    void statusOfTheServersGrepComesThrough() {
        QFETCH(QByteArray, grep);
        QFETCH(int, status);
        const QString bin = m_platformFolder.filePath(u"bin"_s);
        write(bin + u"/grep"_s, "#!/bin/sh\n[ $# -gt 0 ] && case \"$*\" in *.git*) " + grep +
                                    ";; esac\nexit " + (grep.isEmpty() ? "1" : "0") + "\n");
        QVERIFY(QFile::setPermissions(bin + u"/grep"_s, QFile::ReadOwner | QFile::ExeOwner));
        QProcess shell;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"PATH"_s, bin + u":/usr/bin:/bin"_s);
        shell.setProcessEnvironment(environment);
        shell.start(u"/bin/sh"_s, {u"-c"_s, searchCommand(m_project.path, u"x"_s)});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), status);
    }

    void fiveHundredFilesOverADistantLine() {
        for (int i = 0; i < 500; ++i)
            write(m_project.path + u"/d%1/f%2.php"_s.arg(i % 20).arg(i),
                  QByteArray("<?php\n").repeated(200) + "needle\n");
        sandbox::SlowLine line(m_platform->ssh().port());
        line.setQuality({20ms, 0});
        m_platform->ssh().letClientsUse(line.port());
        const auto measured = [this](const char* text) {
            QElapsedTimer timer;
            timer.start();
            QCOMPARE(search(u"needle"_s).hits.size(), 500);
            qInfo("500 files, 40 ms: %s %lld ms", text, timer.elapsed());
        };
        measured("own connection");
        const QString login = m_project.sshLogin();
        m_shared->open(login);
        const QStringList nothing{u"true"_s};
        QTRY_VERIFY(await(m_shared->run(login, nothing)));
        measured("shared connection");
        line.freezeConnections();
        QElapsedTimer timer;
        timer.start();
        measured("frozen connection");
        QVERIFY(timer.elapsed() >= 1900 && timer.elapsed() < 10'000);
        await(m_shared->close());
        m_platform->ssh().letClientsUse(m_platform->ssh().port());
    }
};

QTEST_GUILESS_MAIN(TestServerSearch)
#include "tst_server_search.moc"
