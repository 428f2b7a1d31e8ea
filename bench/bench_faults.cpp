// The longest time that the main loop is blocked while mounts, servers and answers fail.

#include "bench/LoopWatch.h"
#include "bench/Measured.h"

#include "System/Tables/MountTable.h"
#include "desktop/DesktopFixture.h"
#include "support/Leftovers.h"

#include <csignal>
#include <functional>

using namespace Qt::StringLiterals;
using sandbox::Fault;
using Endpoint = sandbox::Sandbox::Endpoint;

namespace {
constexpr int projects = 20;
constexpr int rounds = 2;
constexpr double limit = 50; // milliseconds

/// The whole desktop part on a platform with real mounts.
class Scene {
  public:
    Scene() : m_platform({m_folder.path(), projects, true}), m_path(qgetenv("PATH")) {
        qputenv("PATH", m_platform.ssh().binFolder().toUtf8() + ':' + m_path);
        m_desktop = std::make_unique<DesktopFixture>(m_platform.server());
        m_desktop->signIn("erika");
        m_desktop->openPanel();
    }

    void answerWith(const QByteArray& body, qint64 padding) {
        Fault fault;
        fault.status = 200;
        fault.body = body;
        fault.padding = padding;
        m_platform.setFault(Endpoint::directory, fault);
        await(state().parts().loading.refresh());
        m_platform.setFault(Endpoint::directory, {});
        await(state().parts().loading.refresh());
    }

    void killSshfs() {
        const Project project = state().projects().first();
        await(state().parts().connections.connect(project));
        const QString mountPoint = m_desktop->host.mountRoot() + u'/' + project.domain;
        if (!MountTable::lists(mountPoint))
            qFatal("nothing is mounted");
        for (const pid_t pid : processesWith(mountPoint))
            ::kill(pid, SIGKILL);
        if (!QTest::qWaitFor([this] { return state().connectedDomains().isEmpty(); }))
            qFatal("the end of the mount is not noticed");
    }

    void loseServer(LoopWatch& watch) {
        const Project project = state().projects().first();
        await(state().parts().connections.connect(project));
        watch.pausedFor([this] { m_platform.ssh().stop(); });
        await(state().parts().connections.disconnect(project.domain, false));
        watch.pausedFor([this] { m_platform.ssh().start(); });
    }

    void connectAll() {
        std::vector<QCoro::Task<>> connecting;
        for (const Project& project : state().projects()) {
            connecting.push_back(state().parts().connections.connect(project));
            QCoreApplication::processEvents(); // a click is an event of its own
        }
        for (auto& task : connecting)
            await(std::move(task));
        if (state().connectedDomains().size() != projects)
            qFatal("not all projects are connected");
        std::vector<QCoro::Task<>> ending;
        for (const Project& project : state().projects()) {
            ending.push_back(state().parts().connections.disconnect(project.domain, false));
            QCoreApplication::processEvents();
        }
        for (auto& task : ending)
            await(std::move(task));
    }

  private:
    AppState& state() { return *m_desktop->state; }

    QTemporaryDir m_folder;
    sandbox::Sandbox m_platform;
    QByteArray m_path;
    std::unique_ptr<DesktopFixture> m_desktop;
};
} // namespace

int main(int argc, char* argv[]) {
    chooseSceneGraph();
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    constexpr qint64 tooMuch = qint64(200) * 1024 * 1024;
    Scene scene;
    LoopWatch watch;
    const std::vector<std::pair<const char*, std::function<void()>>> faults{
        {"nested answer", [&] { scene.answerWith(QByteArray(100000, '['), 0); }},
        {"answer of 200 MB", [&] { scene.answerWith({}, tooMuch); }},
        {"sshfs killed", [&] { scene.killSshfs(); }},
        {"server gone while mounted", [&] { scene.loseServer(watch); }},
        {"all projects at once", [&] { scene.connectAll(); }},
    };
    for (int round = 0; round < rounds; ++round) {
        for (const auto& [name, play] : faults) {
            watch.setStep(name);
            play();
        }
    }
    printFigure("longest block of the main loop", watch.longest(), "ms", limit, watch.during());
    return EXIT_SUCCESS;
}
