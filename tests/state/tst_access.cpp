#include "StateFixture.h"
#include "support/Leftovers.h"

#include <QProcess>
#include <QTcpServer>

using namespace Qt::StringLiterals;

/// Keeps the arguments of the program that was launched last.
class RecordingShell : public DesktopShell {
  public:
    QStringList last;

    void launch(const QString& executable, const QStringList& arguments) override {
        last = arguments;
        DesktopShell::launch(executable, arguments);
    }
};

/// The help with a server that lets nobody in, against a real sshd, with the real ssh, agent and ssh-keygen.
class TestAccess : public StateFixture {
    Q_OBJECT

  private:
    QString m_wrapper;

    [[nodiscard]] AccessHelp& help() const { return *m_state->access(); }

    [[nodiscard]] QString file(const char* name) const { return m_home->filePath(QString::fromLatin1(name)); }

    /// Starts the state with an ssh that has `options` before its other arguments, signed in.
    void startWith(const QString& options) {
        HostSystem host = this->host();
        m_wrapper = m_home->filePath(u"ssh"_s);
        QFile script(m_wrapper);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\nexec " + m_platform->ssh().binFolder().toUtf8() + "/ssh " +
                     options.toUtf8() + " \"$@\"\n");
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        script.close();
        host.ssh = m_wrapper;
        await(m_state->shutDown());
        start(host);
        signIn("erika");
    }

    void openRefused() {
        m_platform->ssh().acceptKey(false);
        connectTo(project(0));
        help().show();
        QTRY_VERIFY(!help().keyText().endsWith(u"…"_s));
    }

    void check() {
        help().check();
        QTRY_VERIFY_WITH_TIMEOUT(!help().isChecking(), 20'000);
    }

    /// Makes a program that stands in for the question of ssh in a window.
    QString answers(const QByteArray& script) {
        QFile program(file("ask"));
        if (!program.open(QIODevice::WriteOnly) || program.write("#!/bin/sh\n" + script) < 0)
            qFatal("no program");
        program.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
        return u"SSH_ASKPASS="_s + program.fileName();
    }

    [[nodiscard]] QByteArray knownHosts() const { return content(host().knownHostsFile()); }

    QByteArray run(const QString& program, const QStringList& arguments) {
        QProcess process;
        process.start(program, arguments);
        process.closeWriteChannel();
        return process.waitForFinished() ? process.readAllStandardOutput() : QByteArray();
    }

  private Q_SLOTS:

    void isOfferedBesideItsFailureOnly() {
        startWith({});
        help().show();
        QVERIFY(!help().isOpen());
        m_platform->ssh().acceptKey(false);
        connectTo(project(0));
        QVERIFY(help().isOffered());
        QCOMPARE(help().text(), *m_state->lastError());
        m_state->dismissLastError();
        QVERIFY(!help().isOffered());
    }

    void eachStepIsTold_data() {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("sentence");
        const QTcpServer closed;
        QTest::newRow("refused") << QString() << u"Der Server kennt den angebotenen Schlüssel nicht."_s;
        QTest::newRow("no key") << u"-o IdentityFile=none -o PubkeyAuthentication=no"_s
                                << u"ssh hat keinen Schlüssel, den es anbieten kann."_s;
        QTest::newRow("name") << u"-o HostName=nowhere.invalid"_s << u"lässt sich nicht auflösen."_s;
        QTest::newRow("port") << u"-o Port=1"_s << u"keine Verbindung an."_s;
        QTest::newRow("revoked") << u"-o RevokedHostKeys="_s +
                                        m_platformFolder.filePath(u"ssh/host_key.pub"_s)
                                 << u"auf diesem Rechner gesperrt (revoked)."_s;
        QTest::newRow("unknown") << u"-o HostKeyAlias=other"_s << u"Der Server ist noch nicht bekannt."_s;
    }

    void eachStepIsTold() {
        QFETCH(QString, options);
        QFETCH(QString, sentence);
        startWith(options);
        openRefused();
        const QByteArray before = knownHosts();
        check();
        QVERIFY2(help().finding().contains(sentence), qPrintable(help().finding()));
        QVERIFY(!help().works());
        QCOMPARE(knownHosts(), before);
        QCOMPARE(help().serverKey().isEmpty(), options != u"-o HostKeyAlias=other"_s);
    }

    void aKeyEnteredMeanwhileWorks() {
        startWith({});
        openRefused();
        help().copyKey();
        QCOMPARE(m_copied.toUtf8() + '\n', content(m_platformFolder.filePath(u"ssh/client_key.pub"_s)));
        m_platform->ssh().acceptKey(true);
        check();
        QVERIFY2(help().works(), qPrintable(help().finding()));
    }

    void aChangedServerIsTrustedAtTheSecondPressOnly() {
        startWith({});
        openRefused();
        QFile list(host().knownHostsFile());
        QVERIFY(list.open(QIODevice::Append));
        const QByteArray others =
            "# mine\nother.example ssh-ed25519 AAAAC3NzaC1lZDI1NTE5AAAAIDdgQr45GekazJtj/"
            "vCKie5bjWqxN9zq3lrxL84n6fug\n";
        list.write(others);
        list.close();
        const QByteArray before = knownHosts();
        const QString old = help().serverKey();
        m_platform->ssh().acceptKey(true);
        m_platform->ssh().replaceHostKey();
        check();
        QVERIFY(old.isEmpty() && help().knownServerKeys().startsWith(u"ED25519 SHA256:"_s));
        const QString shown = QString::fromUtf8(
            run(u"ssh-keygen"_s, {u"-lf"_s, m_platformFolder.filePath(u"ssh/host_key.pub"_s)}));
        QVERIFY(shown.contains(help().serverKey().section(u' ', 1)));
        help().trust();
        QTest::qWait(300);
        QVERIFY(help().asksForTrust());
        QCOMPARE(knownHosts(), before);
        help().trust();
        QTRY_VERIFY2_WITH_TIMEOUT(help().works(), qPrintable(help().finding()), 15'000);
        const QByteArray after = knownHosts();
        QVERIFY(after.startsWith(others));
        QCOMPARE(after.count('\n'), before.count('\n'));
        QCOMPARE(QFile::permissions(host().knownHostsFile()) & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
    }

    void anAgentThatAsksIsTold() {
        const QString socket = file("agent");
        QProcess agent;
        agent.start(u"env"_s,
                    {answers("sleep 5; exit 1"), u"DISPLAY=:0"_s, u"ssh-agent"_s, u"-D"_s, u"-a"_s, socket});
        QTRY_VERIFY(QFileInfo::exists(socket));
        run(u"env"_s, {u"SSH_AUTH_SOCK="_s + socket, u"ssh-add"_s, u"-c"_s,
                       m_platformFolder.filePath(u"ssh/client_key"_s)});
        startWith(u"-o IdentityAgent="_s + socket);
        openRefused();
        m_platform->ssh().acceptKey(true);
        help().check();
        QTRY_VERIFY_WITH_TIMEOUT(help().finding().contains(u"wartet auf die Unterschrift"_s), 4800);
        QVERIFY(help().isChecking());
        QTRY_VERIFY_WITH_TIMEOUT(!help().isChecking(), 10'000);
        QVERIFY2(help().finding().startsWith(u"Der Server kennt den Schlüssel, aber"_s),
                 qPrintable(help().finding()));
        agent.terminate();
        agent.waitForFinished();
    }

    void aNewKeyReplacesNothing() {
        const QString place = file("keys/my id");
        auto shell = std::make_unique<RecordingShell>();
        RecordingShell& terminal = *shell;
        terminal.browser = m_shell->browser;
        await(m_state->shutDown());
        m_state.reset();
        m_shell = std::move(shell);
        start(); // with the other shell
        startWith(u"-F /dev/null -o IdentityAgent=none -o 'IdentityFile=\"%1\"'"_s.arg(place));
        openRefused();
        QCOMPARE(help().keyOffer(), u"Schlüssel anlegen"_s);
        qputenv("TERMINAL", "/bin/true"); // what it would run, the test runs
        help().makeKey();
        const auto terminalCommand = [&] {
            return QStringList{answers("echo 'geheim 12'"), u"SSH_ASKPASS_REQUIRE=force"_s} +
                   terminal.last.mid(terminal.last.indexOf(u"/bin/sh"_s));
        };
        QDir().mkpath(file("keys"));
        const QStringList terminalRun = terminalCommand();
        run(u"env"_s, terminalRun);
        QTRY_VERIFY(help().keyIsKnown()); // the folder is watched
        help().copyKey();
        const QByteArray made = content(place + u".pub"_s);
        QVERIFY(made.startsWith("ssh-ed25519 ") && made == m_copied.toUtf8() + '\n');
        QVERIFY(run(u"ssh-keygen"_s, {u"-y"_s, u"-P"_s, u"geheim 12"_s, u"-f"_s, place})
                    .startsWith("ssh-ed25519"));
        const QByteArray key = content(place);
        run(u"env"_s, terminalRun); // a second terminal
        QCOMPARE(content(place), key);
        QCOMPARE(content(place + u".pub"_s), made);
        QCOMPARE(QDir(file("keys")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(),
                 2);

        QFile::remove(place + u".pub"_s);
        QTRY_COMPARE(help().keyOffer(), u"Öffentlichen Teil anlegen"_s);
        help().makeKey();
        run(u"env"_s, terminalCommand());
        QCOMPARE(content(place + u".pub"_s), made);
        QTRY_VERIFY(help().keyIsKnown() && help().keyOffer().isEmpty());
    }
};

int main(int argc, char* argv[]) {
    QCoreApplication application(argc, argv);
    TestAccess test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_access.moc"
