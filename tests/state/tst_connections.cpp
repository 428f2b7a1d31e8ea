#include "StateFixture.h"

#include "System/Tables/MountTable.h"
#include "sandbox/ssh/SlowLine.h"
#include "support/Leftovers.h"
#include "support/OwnNetwork.h"
#include "support/PrivateBus.h"
#include "support/StandInLoginManager.h"

#include <QDir>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {
bool hasOwnNetwork = false; ///< the tests may change the network, because nobody else uses it

int bit(HoverTarget target) {
    return 1 << static_cast<int>(target);
}
} // namespace

/// Connections over the day: lists that fail, other accounts, mounts that end, sleep, networks, restarts.
class TestConnections : public StateFixture {
    Q_OBJECT

    PrivateBus m_bus;
    StandInLoginManager m_loginManager;

    [[nodiscard]] QVariant shown(const QString& domain, int role) const {
        const ProjectListModel& rows = *m_state->visibleProjects();
        return rows.index(rows.rowOf(domain)).data(role);
    }

    void loseTheList() {
        answer(Endpoint::directory, 500);
        load();
        QVERIFY(m_state->projects().isEmpty());
        m_platform->setFault(Endpoint::directory, {});
    }

  private Q_SLOTS:

    void init() {
        m_bus.start();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8());
        QVERIFY(m_loginManager.start(m_bus.address()));
        StateFixture::init();
        signIn("erika");
    }

    void cleanup() {
        StateFixture::cleanup();
        m_loginManager.stop();
    }

    void whatIsMountedStaysInReach() {
        const Project mounted = project(0);
        connectTo(0);
        QCOMPARE(m_state->visibleProjects()->keptCount(), 0);
        loseTheList();
        QCOMPARE(m_state->visibleProjects()->count(), 1);
        QCOMPARE(shown(mounted.domain, ProjectListModel::keptRole).toBool(), true);
        const int offers = shown(mounted.domain, ProjectListModel::offersRole).toInt();
        for (const HoverTarget target :
             {HoverTarget::disconnect, HoverTarget::vscode, HoverTarget::finder, HoverTarget::ssh})
            QVERIFY(offers & bit(target));
        m_state->perform(static_cast<int>(HoverTarget::disconnect), mounted.domain, false);
        QTRY_COMPARE(m_state->visibleProjects()->count(), 0);
        QVERIFY(!MountTable::lists(mountPoint(0)));

        load();
        connectTo(0);
        await(m_state->parts().accounts.removeAccount(*m_state->activeAccountID()));
        QCOMPARE(m_state->visibleProjects()->keptCount(), 1);
        signIn("erika"); // the list holds it again
        QCOMPARE(m_state->visibleProjects()->keptCount(), 0);
        QCOMPARE(m_state->visibleProjects()->count(), 12);
    }

    void endedMountsAreShownUntilTheyAreDealtWith() {
        for (const int index : {0, 1})
            connectTo(index);
        for (const int index : {0, 1})
            for (const pid_t pid : processesWith(mountPoint(index)))
                ::kill(pid, SIGKILL);
        QTRY_COMPARE(m_state->connectedDomains().size(), 0);
        for (const QString& domain : {domain(0), domain(1)}) {
            QVERIFY(shown(domain, ProjectListModel::lostRole).toBool());
            QVERIFY(shown(domain, ProjectListModel::offersRole).toInt() & bit(HoverTarget::connect));
        }
        QCOMPARE(messages().filter(u" unerwartet beendet (Exit "_s).size(), 2);
        QVERIFY(m_ended.isEmpty()); // told together, after a moment
        QTRY_COMPARE(m_ended.size(), 2);
        loseTheList();
        QCOMPARE(m_state->visibleProjects()->count(), 2);
        load();
        connectTo(0);
        QVERIFY(!shown(domain(0), ProjectListModel::lostRole).toBool());
        m_state->perform(static_cast<int>(HoverTarget::disconnect), domain(1), false); // not wanted any more
        QVERIFY(!shown(domain(1), ProjectListModel::lostRole).toBool());
    }

    void aKilledProgramsMountComesBackUnlessItIsInUse() {
        m_state->setReconnectsAtStart(true);
        for (const int index : {0, 1})
            connectTo(index);
        QFile file(mountPoint(1) + u"/public/offen.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        start(); // the state that mounted them was destroyed without an end, as in a crash
        QTRY_VERIFY(
            messages().contains(u"Übrig gebliebenen Mount von %1 getrennt."_s.arg(project(0).domain)));
        QTRY_COMPARE(
            messages().filter(u"Ein Mount von %1 ist übrig geblieben"_s.arg(project(1).domain)).size(), 1);
        QTRY_COMPARE(m_state->connectedDomains(), QSet<QString>{project(0).domain});
        QTRY_VERIFY(shown(project(1).domain, ProjectListModel::lostRole).toBool());
        QVERIFY(MountTable::lists(mountPoint(1)));
        QCOMPARE(file.write("alles"), 5);
        file.close();
        QCOMPARE(QFile(project(1).path + u"/public/offen.txt"_s).size(), 5);
        connectTo(1); // a click replaces it
    }

    void aShortSleepAndTheUsersWishAreRespected() {
        connectTo(0);
        const QString domain = project(0).domain;
        ConnectionCare& care = m_state->parts().care;
        auto preparing = care.prepareForSleep();
        care.wakeUp(); // before all was detached
        await(std::move(preparing));
        QTRY_COMPARE(m_state->connectedDomains(), QSet<QString>{domain});

        await(care.prepareForSleep());
        m_platform->ssh().stop();
        care.wakeUp();
        QTRY_VERIFY(shown(domain, ProjectListModel::lostRole).toBool());
        m_platform->ssh().start();
        connectTo(0);
        disconnectFrom(0);
        Q_EMIT care.tryAgain();
        QTest::qWait(1000);
        QVERIFY(!MountTable::lists(mountPoint(0)));

        connectTo(0);
        auto detaching = care.prepareForSleep();
        disconnectFrom(0);
        await(std::move(detaching));
        care.wakeUp();
        QTest::qWait(1000);
        QVERIFY(!MountTable::lists(mountPoint(0)));
    }

    void mountsComeBackAtTheStartWhereWanted() {
        QVERIFY(!m_state->reconnectsAtStart());
        for (const bool wanted : {false, true}) {
            m_state->setReconnectsAtStart(wanted);
            for (const int index : {0, 1})
                connectTo(index);
            disconnectFrom(1);
            await(m_state->shutDown());
            m_shell->opened.clear();
            start();
            QCOMPARE(m_state->reconnectsAtStart(), wanted);
            if (wanted)
                QTRY_COMPARE(m_state->connectedDomains(), QSet<QString>{project(0).domain});
            else
                QTest::qWait(700);
            QCOMPARE(MountTable::lists(mountPoint(0)), wanted);
            QVERIFY(!MountTable::lists(mountPoint(1)));
            QVERIFY(m_shell->opened.filter(u"code"_s).isEmpty());
        }
    }

    void sleepTakesIdleMountsAndWakingBringsThemBack() {
        for (const int index : {0, 1})
            connectTo(index);
        QTRY_VERIFY(m_loginManager.lockIsHeld());
        QFile inUse(mountPoint(1) + u"/neu.txt"_s);
        QVERIFY(inUse.open(QIODevice::WriteOnly));
        m_shell->opened.clear();
        m_loginManager.sleep();
        QTRY_VERIFY_WITH_TIMEOUT(!m_loginManager.lockIsHeld(), 4000);
        QCOMPARE(m_state->connectedDomains(), QSet<QString>{project(1).domain});
        QVERIFY(!MountTable::lists(mountPoint(0)) && MountTable::lists(mountPoint(1)));
        inUse.close();

        m_platform->ssh().stop(); // the network is not back yet
        m_loginManager.wake();
        QTRY_VERIFY(shown(project(0).domain, ProjectListModel::lostRole).toBool());
        m_platform->ssh().start();
        QTRY_COMPARE_WITH_TIMEOUT(m_state->connectedDomains().size(), 2, 10'000);
        QVERIFY(!shown(project(0).domain, ProjectListModel::lostRole).toBool());
        QVERIFY(m_shell->opened.filter(u"code"_s).isEmpty());
        QTRY_VERIFY(m_loginManager.lockIsHeld()); // for the next sleep
    }

    void anotherNetworkRenewsConnectionsAndTheList() {
        if (!hasOwnNetwork)
            QSKIP("this user may not change a network");
        sandbox::SlowLine line(m_platform->ssh().port());
        m_platform->ssh().letClientsUse(line.port());
        connectTo(0);
        m_platform->ssh().letClientsUse(m_platform->ssh().port());
        line.freezeConnections();
        loseTheList();
        QVERIFY(OwnNetwork::ipBatch({u"link add v0 type veth peer name v1"_s,
                                     u"address add 192.0.2.1/24 dev v0"_s, u"link set v0 up"_s,
                                     u"link set v1 up"_s}));
        QTRY_COMPARE(m_state->projects().size(), 12);
        QTRY_COMPARE(messages().filter(u"wurde neu aufgebaut"_s).size(), 1);
    }

    void linksThatTheServerCanFollowAreOffered() {
        const Project linked = project(0);
        QVERIFY(QDir().mkpath(linked.path + u"/../releases/42"_s));
        QVERIFY(QDir().rename(linked.path + u"/web"_s, linked.path + u"/web.alt"_s));
        QVERIFY(QFile::link(u"../releases/42"_s, linked.path + u"/web"_s));
        const QFileInfo mounted(mountPoint(0) + u"/web"_s);
        connectTo(0);
        QTRY_COMPARE(m_state->guidance().value(u"title"_s).toString(),
                     u"Der Ordner „web“ ist eine Verknüpfung"_s);
        QVERIFY(!mounted.isDir());
        m_state->answerGuidance(0);
        QTRY_VERIFY(m_state->connectedDomains().isEmpty());
        QTRY_COMPARE(m_state->connectedDomains().size(), 1);
        await(m_state->shutDown());
        start(); // remembered
        connectTo(0);
        QVERIFY(QFileInfo(mounted.filePath()).isDir());
        QVERIFY(m_state->guidance().isEmpty());
        QVERIFY(QFile::remove(linked.path + u"/web"_s));
        QVERIFY(QDir().rename(linked.path + u"/web.alt"_s, linked.path + u"/web"_s));
    }
};

int main(int argc, char* argv[]) {
    // A user who is not root would get other rights in a network of his own.
    hasOwnNetwork = ::geteuid() == 0 && OwnNetwork::enterOwnNetwork() && OwnNetwork::ip(u"link set lo up"_s);
    QCoreApplication application(argc, argv);
    TestConnections test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_connections.moc"
