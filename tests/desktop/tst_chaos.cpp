#include "ChaosFixture.h"

#include <csignal>

using namespace Qt::StringLiterals;

/// The whole desktop part on real parts that fail one after the other, in an order that the seed decides.
/// After each step nothing is stuck, nothing is left over, and each failure is in the log once.
class TestChaos : public ChaosFixture {
    Q_OBJECT

    QList<Step> steps() {
        const QByteArray html("<!doctype html><title>Wartung</title>");
        const QString unread = u"Projekt-JSON konnte nicht gelesen werden."_s;
        const QString connection = u"Mount fuer "_s;
        return {
            answer("server error", fault(500, html), u"unerwartete Antwort (500)"_s),
            answer("page instead of records", fault(200, html), unread),
            answer("nesting", fault(200, QByteArray(100000, '[')), unread),
            answer("200 MB", fault(200, {}, qint64(200) * 1024 * 1024), u"zu groß"_s),
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
                 tryToConnect(anyProject());
                 m_platform->ssh().acceptKey(true);
             },
             connection},
            {"no server", [this] { withServerStopped([this] { tryToConnect(anyProject()); }); }, connection},
            {"server gone while mounted", mounted([this](const Project& project) {
                 withServerStopped([&] { disconnectFrom(project); });
             })},
            {"sshfs killed", mounted([this](const Project& project) {
                 for (const pid_t pid : processesWith(mountPoint(project)))
                     ::kill(pid, SIGKILL);
                 QTRY_VERIFY(state().connectedDomains().isEmpty());
                 connectTo(project);
                 disconnectFrom(project);
             }),
             u"unerwartet beendet"_s},
            {"sshfs replaced by a broken one", withSshfsReplacedBy(u"/usr/bin/false"_s),
             u"sshfs ist installiert, startet aber nicht"_s},
            {"sshfs uninstalled while mounted", withSshfsReplacedBy({}), u"sshfs nicht installiert"_s},
            {"file in use", mounted([this](const Project& project) {
                 QFile file(mountPoint(project) + u"/neu.txt"_s);
                 QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
                 disconnectFrom(project);
                 QCOMPARE(file.write("alles"), 5);
                 file.close();
                 QCOMPARE(QFile(project.path + u"/neu.txt"_s).size(), 5);
             })},
            {"all at once, in use",
             [this] {
                 const auto forAll = [this](const auto& start, const auto& meanwhile) {
                     std::vector<QCoro::Task<>> tasks;
                     for (const Project& project : state().projects()) {
                         tasks.push_back(start(project));
                         QCoreApplication::processEvents(); // as fast as a hand could be
                     }
                     meanwhile();
                     for (auto& task : tasks)
                         await(std::move(task));
                 };
                 Connections& connections = state().parts().connections;
                 forAll([&](const Project& project) { return connections.connect(project); },
                        [this] { m_desktop->statusBar->toggle(); });
                 m_desktop->statusBar->toggle();
                 QCOMPARE(state().connectedDomains().size(), projects);
                 state().setSearchText(u"projekt"_s);
                 await(state().parts().loading.refresh());
                 forAll([&](const Project& project) { return connections.disconnect(project.domain, false); },
                        [this] { state().setSearchText({}); });
             }},
            {"silent server",
             [this] {
                 sandbox::SlowLine line(m_platform->ssh().port());
                 m_platform->ssh().letClientsUse(line.port());
                 mounted([&](const Project& project) {
                     m_platform->ssh().letClientsUse(m_platform->ssh().port());
                     line.freezeConnections();
                     QProcess writer;
                     writer.start(
                         u"/usr/bin/dd"_s,
                         {u"if=/dev/zero"_s, u"of="_s + mountPoint(project) + u"/upload"_s, u"count=2048"_s});
                     QTest::qWait(200);
                     disconnectFrom(project);
                     line.thawConnections();
                     QTRY_COMPARE(writer.state(), QProcess::NotRunning);
                 })();
             }},
            {"sleep", mounted([this](const Project& project) {
                 QTRY_VERIFY(m_loginManager.lockIsHeld());
                 m_loginManager.sleep();
                 QTRY_VERIFY(!m_loginManager.lockIsHeld());
                 QVERIFY(!MountTable::lists(mountPoint(project)));
                 m_loginManager.wake();
                 QTRY_VERIFY(state().parts().sshfsMounter.sessions().contains(project.domain));
                 disconnectFrom(project);
             })},
            {"double clicks",
             [this] {
                 const Project project = anyProject();
                 Connections& connections = state().parts().connections;
                 auto first = connections.connect(project);
                 auto ending = connections.disconnect(project.domain, false);
                 auto second = connections.connect(project);
                 await(std::move(first));
                 await(std::move(ending));
                 await(std::move(second));
                 await(connections.disconnect(project.domain, false));
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
        QList<Step> order = steps() + steps();
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
