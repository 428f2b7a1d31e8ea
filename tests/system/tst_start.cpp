#include "System/HostSystem.h"
#include "System/Native/LoginItem.h"
#include "System/Requests/RequestSocket.h"
#include "System/SingleInstance.h"

#include <QFile>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// Who starts the program, and how often.
class TestStart : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void startWithTheDesktopIsTheDesktopsOwn() {
        const QTemporaryDir home;
        HostSystem host = HostSystem::linuxDesktop(home.path());
        LoginItem item(host);
        QVERIFY(!item.isEnabled());
        QVERIFY(item.setEnabled(true) && item.isEnabled());
        QFile entry(host.autostartFile);
        QVERIFY(entry.open(QIODevice::ReadWrite));
        QVERIFY(entry.readAll().contains("\nExec=\"" + QCoreApplication::applicationFilePath().toUtf8() +
                                         "\"\n"));
        entry.write("Hidden=true\n"); // as desktops turn it off
        entry.close();
        QVERIFY(!item.isEnabled());
        QVERIFY(item.setEnabled(false));
        QVERIFY(!QFile::exists(host.autostartFile));
        host.autostartFile = u"/proc/none/entry.desktop"_s;
        QVERIFY(!LoginItem(host).setEnabled(true));
    }

    void theSecondOneAsksTheFirstToShowItself() {
        const QTemporaryDir home;
        HostSystem host = HostSystem::linuxDesktop(home.path());
        host.socketFolder = home.filePath(u"run"_s);
        // In the second folder no lock file can be written.
        for (const QString& folder : {home.filePath(u"private"_s), u"/dev/null"_s + home.path()}) {
            host.privateFolder = folder;
            auto first = std::make_unique<SingleInstance>(host);
            QList<Request> asked;
            first->requests().setHandler([&](const Request& request) -> QCoro::Task<Answer> {
                asked.append(request);
                co_return Answer{};
            });
            QVERIFY(first->claim());
            QVERIFY(!SingleInstance(host).claim());
            QTRY_COMPARE(asked, QList<Request>{Request()});
            first.reset();
            QVERIFY(SingleInstance(host).claim());
        }
        // Where others may write, the name could be somebody else's: nobody is asked, nobody answers.
        QVERIFY(QFile::setPermissions(host.socketFolder, QFile::Permissions(0x7777)));
        SingleInstance alone(host);
        QVERIFY(alone.claim());
        QCOMPARE(requestSocket(host), std::nullopt);
    }

    void aHostileClientHoldsNothing() {
        const QTemporaryDir home;
        const QString path = home.filePath(u"socket"_s);
        RequestServer server({.request = 300ms, .reading = 300ms, .connections = 3});
        server.setHandler([](const Request& request) -> QCoro::Task<Answer> {
            co_return Answer{0, QString(1'000'000, u'x'), request.project};
        });
        QVERIFY(server.listen(path));
        const auto connected = [&] {
            auto socket = std::make_unique<QLocalSocket>();
            socket->connectToServer(path);
            return socket;
        };
        const auto answerTo = [&](const QByteArray& line) {
            const auto socket = connected();
            socket->write(line);
            QByteArray answer;
            QObject::connect(socket.get(), &QLocalSocket::readyRead, socket.get(),
                             [&] { answer += socket->readAll(); });
            (void)QTest::qWaitFor([&] { return socket->state() == QLocalSocket::UnconnectedState; });
            return Answer::parse(answer);
        };
        const std::optional<Answer> refused = answerTo(QByteArray(Request::longest + 1, '['));
        QCOMPARE(refused->exitStatus, ExitStatus::wrongUsage);
        QCOMPARE(answerTo("no request\n"), refused);
        const QByteArray request = Request{.command = Request::Command::list}.toLine();
        QCOMPARE(answerTo(request + QByteArray(100'000, '\n'))->output.size(), 1'000'000);

        const auto silent = connected();
        const auto deaf = connected(); // reads nothing of a long answer
        deaf->setReadBufferSize(1);
        deaf->write(request);
        const auto third = connected();
        QTest::qWait(50);
        QCOMPARE(answerTo(request), std::nullopt); // one too many
        QTRY_VERIFY(silent->state() == QLocalSocket::UnconnectedState);
        QTRY_VERIFY(answerTo(request));
    }
};

QTEST_GUILESS_MAIN(TestStart)
#include "tst_start.moc"
