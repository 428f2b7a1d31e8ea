#include "bench/EditingMounts.h"

#include "Mounting/SSHFSProcess.h"
#include "System/Tables/ProcessGroup.h"
#include "support/Await.h"

#include <QDir>
#include <QTest>

#include <stdexcept>

using namespace std::chrono_literals;

namespace {
const QString sshfs = QStringLiteral("/usr/bin/sshfs");

qsizetype entries(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
}

/// The arguments without what the program adds for the desktop.
QStringList bareArguments(HostSystem host, const Project& project, const QString& mountPoint) {
    host.platformMountOptions.clear();
    return sshfsArguments(host, project, mountPoint);
}
} // namespace

double OwnMount::connect() {
    QElapsedTimer timer;
    timer.start();
    await(m_mounter.mount(m_project));
    const auto took = static_cast<double>(timer.elapsed());
    m_connected.start();
    // Bare sshfs has listed the root by now, too. The sandbox's sshd tells the first list of a connection
    // twice over, because libnss-wrapper rewinds a file that is the folder by then; git refuses such a list
    // of refs.
    entries(root());
    return took;
}

void OwnMount::disconnect() {
    await(m_mounter.unmount(m_project.domain));
}

qint64 OwnMount::process() const {
    return m_mounter.sessions().value(m_project.domain).process->group();
}

void OwnMount::settle(std::chrono::milliseconds limit) {
    constexpr std::chrono::milliseconds quiet = 500ms; // several round trips
    auto before = ProcessGroup::traffic(process());
    QElapsedTimer unchanged;
    unchanged.start();
    while (unchanged.elapsed() < quiet.count() && m_connected.elapsed() < limit.count()) {
        QTest::qWait(20);
        const auto now = ProcessGroup::traffic(process());
        if (now != before)
            unchanged.restart();
        before = now;
    }
}

BareMount::BareMount(const HostSystem& host, Project project)
    : m_mountPoint(host.mountRoot() + QStringLiteral("/bare")),
      m_arguments(bareArguments(host, project, m_mountPoint)) {
    QDir().mkpath(m_mountPoint);
}

double BareMount::connect() {
    QElapsedTimer timer;
    timer.start();
    m_sshfs.start(sshfs, m_arguments);
    while (entries(m_mountPoint) == 0) {
        if (m_sshfs.waitForFinished(1))
            throw std::runtime_error("sshfs: " + m_sshfs.readAllStandardError().toStdString());
    }
    return static_cast<double>(timer.elapsed());
}

void BareMount::disconnect() {
    m_sshfs.terminate();
    m_sshfs.waitForFinished();
}
