// How long from "connect" to "mounted", beside what a bare sshfs takes to its first listing.

#include "bench/Measured.h"

#include "Mounting/MountOptions.h"
#include "Mounting/SSHFSMounter.h"
#include "sandbox/Sandbox.h"
#include "sandbox/ssh/ProjectTrees.h"
#include "support/Await.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

namespace {
constexpr int runs = 15;
constexpr double factor = 1.2;
constexpr double pollingStep = 150;

/// Starts sshfs with the program's own options, lists, and takes the mount down.
double bare(const HostSystem& host, const Project& project) {
    const QString mountPoint = host.mountRoot() + QStringLiteral("/bare");
    QDir().mkpath(mountPoint);
    const qsizetype before = QDir(mountPoint).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
    QElapsedTimer timer;
    timer.start();
    QProcess sshfs;
    sshfs.start(QStringLiteral("/usr/bin/sshfs"), sshfsArguments(host, project, mountPoint));
    while (QDir(mountPoint).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size() == before)
        QThread::msleep(1);
    const auto took = static_cast<double>(timer.elapsed());
    sshfs.terminate();
    sshfs.waitForFinished();
    return took;
}
} // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    sandbox::Sandbox platform({folder.filePath(QStringLiteral("platform")), 0, true});
    qputenv("PATH", platform.ssh().binFolder().toUtf8() + ':' + qgetenv("PATH"));
    const HostSystem host = HostSystem::linuxDesktop(folder.filePath(QStringLiteral("home")));
    const sandbox::HostedProject& hosted = platform.people().at(0).projects.at(0);
    const Project project{hosted.domain, hosted.name, QString::number(hosted.webspaceID),
                          sandbox::mountedFolder(platform.treeRoot(), hosted), ProjectType::ssh};
    Shell shell;
    SSHFSMounter mounter(host, shell);
    Measured listing;
    Measured mounting;
    for (int run = 0; run < runs; ++run) { // in turns, so that both meet the same machine
        listing.add(bare(host, project));
        QElapsedTimer timer;
        timer.start();
        await(mounter.mount(project));
        mounting.add(static_cast<double>(timer.elapsed()));
        await(mounter.unmount(project.domain));
    }
    listing.print("bare sshfs to its first listing", std::nullopt);
    mounting.print("connect to mounted", factor * listing.median() + pollingStep);
    return EXIT_SUCCESS;
}
