// What stays behind when the program is used all day: nothing may grow.

#include "Desktop/SceneGraph.h"
#include "Mounting/SSHFSMounter.h"
#include "desktop/DesktopFixture.h"
#include "sandbox/ProjectTrees.h"
#include "sandbox/Sandbox.h"
#include "support/Await.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>
#include <unistd.h>

namespace {
struct Look {
    qsizetype files = 0;
    qsizetype threads = 0;
    qsizetype children = 0; ///< processes started by this one, in any generation that is still its child
    long memory = 0;        ///< kB

    static Look now() {
        const auto entries = [](const char* folder) {
            return QDir(QLatin1String(folder))
                .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                .size();
        };
        Look look;
        look.files = entries("/proc/self/fd");
        look.threads = entries("/proc/self/task");
        QFile children(QStringLiteral("/proc/self/task/%1/children").arg(::getpid()));
        if (children.open(QIODevice::ReadOnly))
            look.children = children.readAll().simplified().split(' ').size();
        QFile status(QStringLiteral("/proc/self/statm"));
        if (status.open(QIODevice::ReadOnly))
            look.memory = status.readAll().split(' ').value(1).toLong() * ::sysconf(_SC_PAGESIZE) / 1024;
        return look;
    }

    void print(int round, const char* what) const {
        std::printf("%5d %s: %3lld files, %2lld threads, %lld children, %6ld kB\n", round, what,
                    qlonglong(files), qlonglong(threads), qlonglong(children), memory);
    }
};

/// Plays `round` again and again, and says whether anything has grown since it was warm.
void endure(const char* what, int rounds, int between, const std::function<void(int)>& play) {
    constexpr long mostGrowth = 2048; // kB of memory
    Look first;
    for (int round = 1; round <= rounds; ++round) {
        play(round);
        if (round % between != 0)
            continue;
        Look::now().print(round, what);
        if (round == between) // pools and caches have by now what they keep
            first = Look::now();
    }
    const Look last = Look::now();
    const bool flat = last.files <= first.files && last.threads <= first.threads &&
                      last.children <= first.children && last.memory - first.memory <= mostGrowth;
    std::printf("after %d %s: %s\n", rounds, what, flat ? "flat" : "GROWN");
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
