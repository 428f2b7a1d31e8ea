// What stays behind when a project is connected and disconnected all day: nothing may grow.

#include "Mounting/SSHFSMounter.h"
#include "sandbox/ProjectTrees.h"
#include "sandbox/Sandbox.h"
#include "support/Await.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <unistd.h>

namespace {
constexpr int rounds = 500;
constexpr int between = 50;       ///< rounds from one look to the next
constexpr int warmUp = 50;        ///< rounds until pools and caches have what they keep
constexpr long mostGrowth = 2048; ///< kB of memory

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

    void print(int round) const {
        std::printf("%4d connects: %3lld files, %2lld threads, %lld children, %6ld kB\n", round,
                    qlonglong(files), qlonglong(threads), qlonglong(children), memory);
    }
};
} // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    sandbox::Sandbox platform({folder.filePath(QStringLiteral("platform")), 0, true});
    qputenv("PATH", platform.ssh().binFolder().toUtf8() + ':' + qgetenv("PATH"));
    Shell shell;
    SSHFSMounter mounter(HostSystem::linuxDesktop(folder.filePath(QStringLiteral("home"))), shell);
    const QList<sandbox::HostedProject>& projects = platform.people().at(0).projects;
    Look first;
    for (int round = 1; round <= rounds; ++round) {
        const sandbox::HostedProject& hosted = projects.at(round % projects.size());
        const Project project{hosted.domain, hosted.name, QString::number(hosted.webspaceID),
                              sandbox::mountedFolder(platform.treeRoot(), hosted), ProjectType::ssh};
        await(mounter.mount(project));
        await(mounter.unmount(project.domain));
        if (round % between != 0)
            continue;
        Look::now().print(round);
        if (round == warmUp)
            first = Look::now();
    }
    const Look last = Look::now();
    const bool flat = last.files <= first.files && last.threads <= first.threads &&
                      last.children <= first.children && last.memory - first.memory <= mostGrowth;
    std::printf("after %d connects and disconnects: %s\n", rounds, flat ? "flat" : "GROWN");
    return EXIT_SUCCESS;
}
