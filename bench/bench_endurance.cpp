// What a day of use leaves behind: neither memory nor files, threads or child processes may grow.

#include "bench/Measured.h"

#include "Desktop/SceneGraph.h"
#include "Mounting/SSHFSMounter.h"
#include "desktop/DesktopFixture.h"
#include "sandbox/Sandbox.h"
#include "sandbox/ssh/ProjectTrees.h"
#include "support/Await.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <functional>
#include <string>
#include <unistd.h>

namespace {
/// What this process holds at one moment.
struct Resources {
    qsizetype files = 0;
    qsizetype threads = 0;
    qsizetype children = 0; ///< processes started by this one, in any generation that is still its child
    long memory = 0;        ///< kB

    static Resources now() {
        const auto entries = [](const char* folder) {
            return QDir(QLatin1String(folder))
                .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                .size();
        };
        Resources held;
        held.files = entries("/proc/self/fd");
        held.threads = entries("/proc/self/task");
        QFile children(QStringLiteral("/proc/self/task/%1/children").arg(::getpid()));
        if (children.open(QIODevice::ReadOnly))
            held.children = children.readAll().simplified().split(' ').size();
        QFile status(QStringLiteral("/proc/self/statm"));
        if (status.open(QIODevice::ReadOnly))
            held.memory = status.readAll().split(' ').value(1).toLong() * ::sysconf(_SC_PAGESIZE) / 1024;
        return held;
    }

    [[nodiscard]] double handles() const { return double(files + threads + children); }
};

/// Plays `round` again and again, and prints what has grown since the first `warmUp` rounds, which fill pools
/// and caches.
void endure(const char* what, int rounds, int warmUp, const std::function<void(int)>& play) {
    constexpr double mostMemory = 2048; // kB
    Resources warm;
    for (int round = 1; round <= rounds; ++round) {
        play(round);
        if (round == warmUp)
            warm = Resources::now();
    }
    const Resources last = Resources::now();
    const std::string after = "after " + std::to_string(rounds) + ' ' + what;
    printFigure((after + ": memory").c_str(), double(last.memory - warm.memory), "kB", mostMemory);
    printFigure((after + ": files, threads, children").c_str(), last.handles() - warm.handles(), "", 0);
}

void connects(const sandbox::Sandbox& platform, const QString& home) {
    Shell shell;
    SSHFSMounter mounter(HostSystem::linuxDesktop(home), shell);
    const QList<sandbox::HostedProject>& projects = platform.people().at(0).projects;
    endure("connects", 500, 50, [&](int round) {
        const sandbox::HostedProject& hosted = projects.at(round % projects.size());
        const Project project{hosted.domain, hosted.name, QString::number(hosted.webspaceID),
                              sandbox::mountedFolder(platform.treeRoot(), hosted), ProjectType::ssh};
        await(mounter.mount(project));
        await(mounter.unmount(project.domain));
    });
}

/// With both windows open, which show what is loaded and logged.
void refreshes(const sandbox::Sandbox& platform) {
    DesktopFixture desktop(platform.server());
    desktop.signIn("erika");
    desktop.settings->show(*desktop.state);
    desktop.statusBar->show();
    endure("refreshes", 1000, 200, [&](int) { await(desktop.state->parts().loading.refresh()); });
    ActivityLog& log = *desktop.state->activityLog();
    endure("log entries", 10000, 2000, [&](int round) {
        log.append(QStringLiteral("Zeile %1").arg(round), ActivityLogLevel::info);
        QCoreApplication::processEvents();
    });
}
} // namespace

int main(int argc, char* argv[]) {
    chooseSceneGraph();
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QTemporaryDir folder;
    sandbox::Sandbox platform({folder.filePath(QStringLiteral("platform")), 0, true});
    qputenv("PATH", platform.ssh().binFolder().toUtf8() + ':' + qgetenv("PATH"));
    connects(platform, folder.filePath(QStringLiteral("home")));
    refreshes(platform);
    return EXIT_SUCCESS;
}
