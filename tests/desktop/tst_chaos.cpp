#include "ChaosFixture.h"

#include <csignal>

using namespace Qt::StringLiterals;

/// The whole desktop part on real parts that fail one after the other, in an order that the seed decides.
/// After each step nothing is stuck, nothing is left over, and each failure is in the log once.
class TestChaos : public ChaosFixture {
    Q_OBJECT

    /// What happens in the hours after a connect.
    QList<Step> longDay() {
        return {
            {"slow upload",
             [this] {
                 overLine([this](const Project& project, sandbox::SlowLine& line) {
                     line.setQuality({std::chrono::milliseconds(20), 500'000});
                     QProcess writer;
                     startWriting(writer, mountPoint(project) + u"/upload"_s, 16);
                     QTRY_VERIFY(QFileInfo(project.path + u"/upload"_s).size() > 0);
                     disconnectFrom(project);
                     QTRY_COMPARE_WITH_TIMEOUT(writer.state(), QProcess::NotRunning, 15'000);
                     QCOMPARE(writer.exitCode(), 0);
                     QCOMPARE(QFileInfo(project.path + u"/upload"_s).size(), 16 * 64 * 1024);
                     QVERIFY(QFile::remove(project.path + u"/upload"_s));
                 });
             },
             {}},
            {"silent server",
             [this] {
                 overLine([this](const Project& project, sandbox::SlowLine& line) {
                     line.freezeConnections();
                     QProcess writer;
                     startWriting(writer, mountPoint(project) + u"/upload"_s, 16);
                     QTest::qWait(200);
                     disconnectFrom(project);
                     line.thawConnections();
                     QTRY_COMPARE(writer.state(), QProcess::NotRunning);
                 });
             },
             {}},
            {"sleep",
             [this] {
                 const Project project = anyProject();
                 connectTo(project);
                 QTRY_VERIFY(m_loginManager.lockIsHeld());
                 m_loginManager.sleep();
                 QTRY_VERIFY(!m_loginManager.lockIsHeld());
                 QVERIFY(!MountTable::lists(mountPoint(project)));
                 m_loginManager.wake();
                 QTRY_VERIFY(MountTable::lists(mountPoint(project)));
                 QTRY_VERIFY(state().parts().sshfsMounter.sessions().contains(project.domain));
                 disconnectFrom(project);
             },
             {}},
            {"another network",
             [this] {
                 overLine([this](const Project& project, sandbox::SlowLine& line) {
                     line.freezeConnections();
                     state().parts().care.networkChanged();
                     QProcess writer;
                     for (const bool renewed : {false, true}) {
                         startWriting(writer, mountPoint(project) + u"/neu.txt"_s, 1);
                         QTRY_COMPARE(writer.state(), QProcess::NotRunning);
                         QVERIFY(!renewed || writer.exitCode() == 0); // what was on the old line may fail
                     }
                     disconnectFrom(project);
                 });
             },
             {}},
            {"link that leads out of the tree",
             [this] {
                 const Project project = anyProject();
                 const QString link = project.path + u'/' + project.documentFolder();
                 QVERIFY(QDir().rename(link, link + u".alt"_s));
                 QVERIFY(QFile::link(u"../../releases/42"_s, link));
                 connectTo(project);
                 state().answerGuidance(-1);
                 disconnectFrom(project);
                 QVERIFY(QFile::remove(link));
                 QVERIFY(QDir().rename(link + u".alt"_s, link));
             },
             {}},
        };
    }

    QList<Step> steps() {
        constexpr qint64 tooMuch = qint64(200) * 1024 * 1024;
        const QByteArray html("<!doctype html><title>Wartung</title>");
        const QString unread = u"Projekt-JSON konnte nicht gelesen werden."_s;
        const QString connection = u"Mount fuer "_s;
        return {
            answer("server error", fault(500, html), u"unerwartete Antwort (500)"_s),
            answer("page instead of records", fault(200, html), unread),
            answer("nesting", fault(200, QByteArray(100000, '[')), unread),
            answer("200 MB", fault(200, {}, tooMuch), u"zu groß"_s),
            answer("torn answer", fault(200, R"({"user":)", 0, true), u"konnten nicht geladen werden"_s),
            {"page instead of tokens",
             [this, html] {
                 m_platform->expireTokens();
                 refreshWith(Endpoint::token, fault(200, html));
             },
             u"Token-Erneuerung fehlgeschlagen"_s},
            {"key refused",
             [this] {
                 m_platform->ssh().acceptKey(false);
                 await(state().parts().connections.connect(anyProject()));
                 m_platform->ssh().acceptKey(true);
             },
             connection},
            {"no server",
             [this] {
                 withServerStopped([this] { await(state().parts().connections.connect(anyProject())); });
             },
             connection},
            {"server gone while mounted",
             [this] {
                 const Project project = anyProject();
                 connectTo(project);
                 withServerStopped([&] { disconnectFrom(project); });
             },
             {}},
            {"sshfs killed",
             [this] {
                 const Project project = anyProject();
                 connectTo(project);
                 for (const pid_t pid : processesWith(mountPoint(project)))
                     ::kill(pid, SIGKILL);
                 QTRY_VERIFY(state().connectedDomains().isEmpty());
                 connectTo(project);
                 disconnectFrom(project);
             },
             u"unerwartet beendet"_s},
            {"sshfs replaced by a broken one",
             [this] {
                 const Project mounted = anyProject();
                 connectTo(mounted);
                 install(u"/usr/bin/false"_s);
                 disconnectFrom(mounted);
                 await(state().parts().connections.connect(mounted));
                 state().answerGuidance(-1);
                 install(u"/usr/bin/sshfs"_s);
             },
             u"sshfs ist installiert, startet aber nicht"_s},
            {"sshfs uninstalled while mounted",
             [this] {
                 const Project mounted = anyProject();
                 connectTo(mounted);
                 install({});
                 disconnectFrom(mounted);
                 await(state().parts().connections.connect(mounted));
                 state().answerGuidance(-1);
                 install(u"/usr/bin/sshfs"_s);
             },
             u"sshfs nicht installiert"_s},
            {"file in use",
             [this] {
                 const Project project = anyProject();
                 connectTo(project);
                 QFile file(mountPoint(project) + u"/neu.txt"_s);
                 QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
                 disconnectFrom(project);
                 QCOMPARE(file.write("alles"), 5);
                 file.close();
                 QCOMPARE(QFile(project.path + u"/neu.txt"_s).size(), 5);
             },
             {}},
            {"all at once, in use",
             [this] {
                 std::vector<QCoro::Task<>> connecting;
                 for (const Project& project : state().projects()) {
                     connecting.push_back(state().parts().connections.connect(project));
                     QCoreApplication::processEvents(); // as fast as a hand could be
                 }
                 m_desktop->statusBar->toggle();
                 for (auto& task : connecting)
                     await(std::move(task));
                 m_desktop->statusBar->toggle();
                 QCOMPARE(state().connectedDomains().size(), projects);
                 state().setSearchText(u"projekt"_s);
                 await(state().parts().loading.refresh());
                 std::vector<QCoro::Task<>> ending;
                 for (const Project& project : state().projects()) {
                     ending.push_back(state().parts().connections.disconnect(project.domain, false));
                     QCoreApplication::processEvents();
                 }
                 state().setSearchText({});
                 for (auto& task : ending)
                     await(std::move(task));
             },
             {}},
            {"double clicks",
             [this] {
                 const Project project = anyProject();
                 auto first = state().parts().connections.connect(project);
                 auto ending = state().parts().connections.disconnect(project.domain, false);
                 auto second = state().parts().connections.connect(project);
                 await(std::move(first));
                 await(std::move(ending));
                 await(std::move(second));
                 await(state().parts().connections.disconnect(project.domain, false));
             },
             {},
             true},
        };
    }

  private Q_SLOTS:

    void everythingFailsAndNothingIsLost() {
        const quint32 seed = qEnvironmentVariableIsSet("HARVELLON_SEED")
                                 ? quint32(qEnvironmentVariableIntValue("HARVELLON_SEED"))
                                 : QRandomGenerator::global()->generate();
        qInfo("HARVELLON_SEED=%u", seed);
        m_random.seed(seed);
        QList<Step> order = steps() + steps() + longDay();
        std::shuffle(order.begin(), order.end(), m_random);
        for (const Step& step : std::as_const(order)) {
            state().activityLog()->clear();
            step.play();
            if (!QTest::currentTestFailed())
                verifyNothingLeft(step);
            if (QTest::currentTestFailed())
                QFAIL(step.name);
        }
    }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestChaos>(argc, argv);
}

#include "tst_chaos.moc"
