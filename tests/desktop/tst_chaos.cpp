#include "DesktopFixture.h"

#include "System/Native/MountTable.h"
#include "support/Leftovers.h"

#include <QRandomGenerator>

#include <csignal>

using namespace Qt::StringLiterals;
using sandbox::Fault;
using Endpoint = sandbox::Sandbox::Endpoint;

namespace {
constexpr int projects = 20;
} // namespace

/// The whole desktop part on real parts that fail one after the other, in an order that the seed decides.
/// After each step nothing is stuck, nothing is left over, and each failure is in the log once.
class TestChaos : public QObject {
    Q_OBJECT

    struct Step {
        const char* name;
        std::function<void()> play;
        QString message;      ///< part of the one error in the log; empty where nothing goes wrong
        bool mayFail = false; ///< any error is allowed, or none: the outcome depends on timing
    };

    QTemporaryDir m_platformFolder;
    QTemporaryDir m_tools; ///< where the program looks for sshfs
    std::unique_ptr<sandbox::Sandbox> m_platform;
    std::unique_ptr<DesktopFixture> m_desktop;
    QRandomGenerator m_random;

    AppState& state() { return *m_desktop->state; }

    [[nodiscard]] QString mountPoint(const Project& project) const {
        return m_desktop->host.mountRoot() + u'/' + project.domain;
    }

    Project anyProject() { return state().projects().at(m_random.bounded(projects)); }

    QStringList errors() {
        QStringList told;
        for (const ActivityLogEntry& entry : state().activityLog()->entries()) {
            if (entry.level == ActivityLogLevel::error)
                told.append(entry.message);
        }
        return told;
    }

    [[nodiscard]] QString sshfs() const { return m_tools.filePath(u"sshfs"_s); }

    void install(const QString& program) {
        QFile::remove(sshfs());
        QVERIFY(program.isEmpty() || QFile::link(program, sshfs()));
    }

    void refreshWith(Endpoint endpoint, const Fault& fault) {
        m_platform->setFault(endpoint, fault);
        await(state().parts().loading.refresh());
        QVERIFY(state().lastError());
        QVERIFY(state().projects().isEmpty());
        m_platform->setFault(endpoint, {});
        await(state().parts().loading.refresh());
        QCOMPARE(state().projects().size(), projects);
    }

    Step answer(const char* name, const Fault& fault, const QString& told) {
        return {name, [this, fault] { refreshWith(Endpoint::directory, fault); }, told};
    }

    static Fault fault(int status, const QByteArray& body, qint64 padding = 0, bool cut = false) {
        Fault fault;
        fault.status = status;
        fault.body = body;
        fault.padding = padding;
        fault.cut = cut;
        return fault;
    }

    void connectTo(const Project& project) {
        await(state().parts().connections.connect(project));
        QVERIFY(MountTable::lists(mountPoint(project)));
    }

    void disconnectFrom(const Project& project) {
        await(state().parts().connections.disconnect(project.domain, false));
        QVERIFY(!MountTable::lists(mountPoint(project)));
    }

    void withServerStopped(const std::function<void()>& work) {
        m_platform->ssh().stop();
        work();
        m_platform->ssh().start();
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

    void verifyNothingLeft(const Step& step) {
        QVERIFY(!state().isLoading());
        QVERIFY(state().connectedDomains().isEmpty());
        for (const QString& path : MountTable::mountPoints())
            QVERIFY2(!path.startsWith(m_desktop->host.mountRoot()), qPrintable(path));
        QTRY_COMPARE(processesWith(m_desktop->host.mountRoot()), QList<pid_t>());
        QTRY_COMPARE(blockedThreads(), 0);
        const QStringList logged = errors();
        if (step.mayFail)
            return;
        if (step.message.isEmpty())
            QVERIFY2(logged.isEmpty(), qPrintable(logged.join(u'\n')));
        else
            QVERIFY2(logged.size() == 1 && logged.first().contains(step.message),
                     qPrintable(logged.join(u'\n')));
    }

  private Q_SLOTS:

    void initTestCase() {
        m_platform =
            std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), projects, true});
        QVERIFY(m_platform->hasSsh());
        qputenv("PATH", m_platform->ssh().binFolder().toUtf8() + ':' + qgetenv("PATH"));
        install(u"/usr/bin/sshfs"_s);
        m_desktop = std::make_unique<DesktopFixture>(m_platform->server(), sshfs());
        m_desktop->signIn("erika");
        m_desktop->openPanel();
        QCOMPARE(state().projects().size(), projects);
    }

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

    void cleanupTestCase() { m_desktop.reset(); }
};

int main(int argc, char* argv[]) {
    return runOnDesktop<TestChaos>(argc, argv);
}

#include "tst_chaos.moc"
