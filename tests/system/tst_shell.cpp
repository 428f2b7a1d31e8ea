#include "System/Shell.h"

#include "support/Await.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

class TestShell : public QObject {
    Q_OBJECT

    Shell m_shell;

  private Q_SLOTS:

    void results_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("errors");
        QTest::newRow("failure is a result") << u"echo a; echo b >&2; exit 7"_s << 7 << u"a\n"_s << u"b\n"_s;
        QTest::newRow("broken text") << u"echo gut; printf 'a\\377' >&2; exit 3"_s << 3 << u"gut\n"_s
                                     << u""_s;
        QTest::newRow("umlaut cut by the pipe")
            << u"printf '\\303'; sleep 0.1; printf '\\244'"_s << 0 << u"ä"_s << u""_s;
        QTest::newRow("more than a pipe holds")
            << u"head -c 300000 /dev/zero | tr '\\0' x >&2"_s << 0 << u""_s << QString(300000, u'x');
    }

    void results() {
        QFETCH(QString, script);
        QFETCH(int, exitCode);
        QFETCH(QString, output);
        QFETCH(QString, errors);
        const ShellResult result = await(m_shell.run(u"/bin/sh"_s, {u"-c"_s, script}));
        QCOMPARE(result.exitCode, exitCode);
        QCOMPARE(result.stdout, output);
        QCOMPARE(result.stderr, errors);
    }

    void whatCannotStartIsNamed() {
        const QString path = u"/no/such/../programm %1"_s;
        try {
            await(m_shell.run(path, {}));
            QFAIL("started");
        } catch (const ShellError& error) {
            QCOMPARE(error.description(),
                     u"Start von "_s + path + u" fehlgeschlagen. Ist es installiert und erreichbar?"_s);
        }
    }

    void whatIsKilledIsNoSuccess() {
        const QStringList script{u"-c"_s, u"kill -9 $$"_s};
        QVERIFY(await(m_shell.run(u"/bin/sh"_s, script)).exitCode != 0);
        QElapsedTimer timer;
        timer.start();
        const QStringList minute{u"60"_s};
        QCOMPARE(await(m_shell.run(u"/bin/sleep"_s, minute, 100ms)).exitCode, Shell::timedOut);
        QVERIFY(timer.elapsed() < 5000);
    }

    void launchedProgramsAreOnTheirOwn() {
        const QTemporaryDir folder;
        const QString result = folder.filePath(u"result"_s);
        // Launched programs write to /dev/null and lead a session of their own.
        m_shell.launch(u"/bin/sh"_s,
                       {u"-c"_s,
                        u"readlink /proc/$$/fd/2 >\"$0\"; ps -o sid= -p $$ >>\"$0\"; echo end >>\"$0\""_s,
                        result});
        QByteArrayList lines;
        QTRY_VERIFY((lines = contentOf(result).split('\n')).contains("end"));
        QCOMPARE(lines.at(0), QByteArray("/dev/null"));
        QVERIFY(lines.at(1).toLongLong() != ::getsid(0));
        QVERIFY_THROWS_EXCEPTION(ShellError, m_shell.launch(u"/no/such/program"_s, {}));
    }

    void watchedProgramsTellHowTheyEnded_data() {
        QTest::addColumn<QString>("program");
        QTest::addColumn<bool>("succeeds");
        QTest::newRow("success") << u"/bin/true"_s << true;
        QTest::newRow("failure") << u"/bin/false"_s << false;
        QTest::newRow("no program") << u"/no/such/program"_s << false;
    }

    void watchedProgramsTellHowTheyEnded() {
        QFETCH(QString, program);
        QFETCH(bool, succeeds);
        const QFuture<bool> end = m_shell.launchWatched(program, {});
        QTRY_VERIFY(end.isFinished());
        QCOMPARE(end.result(), succeeds);
    }
};

QTEST_GUILESS_MAIN(TestShell)
#include "tst_shell.moc"
