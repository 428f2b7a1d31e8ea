#include "System/Async.h"
#include "System/Shell.h"

#include "support/Await.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

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
        QTest::newRow("silent") << "true" << 0 << ""
                                << "";
        QTest::newRow("line feed stays") << "echo x" << 0 << "x\n"
                                         << "";
        QTest::newRow("failure is a result") << "echo a; echo b >&2; exit 7" << 7 << "a\n"
                                             << "b\n";
        QTest::newRow("broken text") << "echo gut; printf 'a\\377' >&2; exit 3" << 3 << "gut\n"
                                     << "";
        QTest::newRow("umlaut cut by the pipe")
            << "printf '\\303'; sleep 0.1; printf '\\244'" << 0 << QStringLiteral("ä") << "";
        QTest::newRow("more than a pipe holds")
            << "head -c 300000 /dev/zero | tr '\\0' x >&2" << 0 << "" << QString(300000, QLatin1Char('x'));
    }

    void results() {
        QFETCH(QString, script);
        QFETCH(int, exitCode);
        QFETCH(QString, output);
        QFETCH(QString, errors);
        const ShellResult result =
            await(m_shell.run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}));
        QCOMPARE(result.exitCode, exitCode);
        QCOMPARE(result.stdout, output);
        QCOMPARE(result.stderr, errors);
    }

    void argumentsPassNoShell() {
        const QString odd = QStringLiteral("a b;$HOME*'\"");
        QCOMPARE(await(m_shell.run(QStringLiteral("/bin/echo"), {odd})).stdout, odd + QLatin1Char('\n'));
    }

    void endBySignalIsNoSuccess() {
        const QStringList script{QStringLiteral("-c"), QStringLiteral("kill -9 $$")};
        QVERIFY(await(m_shell.run(QStringLiteral("/bin/sh"), script)).exitCode != 0);
    }

    void whatCannotStartIsNamed_data() {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing") << "/no/such/../programm %1";
        QTest::newRow("not executable") << "/etc/passwd";
        QTest::newRow("folder") << "/usr";
    }

    void whatCannotStartIsNamed() {
        QFETCH(QString, path);
        try {
            await(m_shell.run(path, {}));
            QFAIL("started");
        } catch (const ShellError& error) {
            QCOMPARE(error.description(),
                     QStringLiteral("Start von ") + path +
                         QStringLiteral(" fehlgeschlagen. Ist es installiert und erreichbar?"));
        }
    }

    void limitEndsTheWait() {
        QElapsedTimer timer;
        timer.start();
        const QStringList minute{QStringLiteral("60")};
        QCOMPARE(await(m_shell.run(QStringLiteral("/bin/sleep"), minute, 100ms)).exitCode, Shell::timedOut);
        QVERIFY(timer.elapsed() < 5000);
    }

    void launchedProgramsAreOnTheirOwn() {
        const QTemporaryDir folder;
        const QString result = folder.filePath(QStringLiteral("result"));
        // Its output goes nowhere, and its session is not ours.
        m_shell.launch(
            QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"),
             QStringLiteral("readlink /proc/$$/fd/2 >\"$0\"; ps -o sid= -p $$ >>\"$0\"; echo end >>\"$0\""),
             result});
        QByteArrayList lines;
        QTRY_VERIFY((lines = contentOf(result).split('\n')).contains("end"));
        QCOMPARE(lines.at(0), QByteArray("/dev/null"));
        QVERIFY(lines.at(1).toLongLong() != ::getsid(0));
        QVERIFY_THROWS_EXCEPTION(ShellError, m_shell.launch(QStringLiteral("/no/such/program"), {}));
    }

    void programsAreLookedUp() {
        const std::optional<QString> found = await(m_shell.which(QStringLiteral("sh")));
        QVERIFY(found && QFileInfo(*found).isExecutable());
        QCOMPARE(await(m_shell.which(QStringLiteral("no-such-program"))), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestShell)
#include "tst_shell.moc"
