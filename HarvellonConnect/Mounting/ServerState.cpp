#include "Mounting/ServerState.h"

#include "Mounting/MountQuestions.h"
#include "Mounting/SSHFSProcess.h"
#include "System/Async.h"
#include "System/Tables/OpenFiles.h"
#include "System/Tables/ProcessGroup.h"

#include <QDeadlineTimer>
#include <QFileInfo>

#include <algorithm>
#include <csignal>
#include <utility>
#include <vector>

namespace {
constexpr std::chrono::milliseconds step{250};
constexpr std::chrono::seconds slowLimit{5};
constexpr std::chrono::milliseconds sampleTime{400};
constexpr quint64 transferBytes = 8 * 1024; // a question and its answer move less than 1 KiB
constexpr quint64 uploadBytes = 1024;       // the question itself is shorter

using TrafficList = QList<std::optional<ProcessGroup::Traffic>>;

QCoro::Task<TrafficList> trafficOf(QList<MountSession> mounts) {
    QList<qint64> groups;
    for (const MountSession& mount : mounts)
        groups.append(mount.process->group());
    const std::function<TrafficList()> work = [groups] {
        TrafficList traffic;
        for (const qint64 group : groups)
            traffic.append(ProcessGroup::traffic(group));
        return traffic;
    };
    const std::optional<TrafficList> traffic = co_await Async::onWorker(work);
    co_return *traffic;
}

/// Whether data was waiting to be confirmed by the server at both times.
bool isUploading(const std::optional<ProcessGroup::Traffic>& before,
                 const std::optional<ProcessGroup::Traffic>& after) {
    return before && after && before->unsent >= uploadBytes && after->unsent >= uploadBytes;
}

/// Whether more than keep-alive messages and single questions went over the line. True where nobody knows.
bool hasMoved(const std::optional<ProcessGroup::Traffic>& before,
              const std::optional<ProcessGroup::Traffic>& after) {
    return !before || !after || after->bytes - std::min(before->bytes, after->bytes) >= transferBytes;
}

bool anyWrittenBelow(const QString& folder) {
    const QFileInfo mountPoint(folder); // links above the mount point are resolved in the system's tables
    return OpenFiles::anyWrittenBelow(QFileInfo(mountPoint.path()).canonicalFilePath() + QLatin1Char('/') +
                                      mountPoint.fileName());
}
} // namespace

QCoro::Task<ServerState> serverState(MountSession session, std::chrono::milliseconds silence) {
    const QFuture<bool> answer = session.questions->serverAnswers();
    const QList<MountSession> mounts{session};
    QDeadlineTimer quiet(silence);
    const QDeadlineTimer whole(slowLimit);
    TrafficList moved = co_await trafficOf(mounts);
    for (;;) {
        const bool answered = co_await Async::finishesWithin(answer, std::min(step, silence));
        if (answered)
            co_return answer.result() ? ServerState::answering : ServerState::silent;
        const TrafficList now = co_await trafficOf(mounts);
        if (now != moved) {
            if (whole.hasExpired())
                co_return ServerState::slow;
            moved = now;
            quiet.setRemainingTime(silence);
        } else if (quiet.hasExpired()) {
            co_return ServerState::silent;
        }
    }
}

QCoro::Task<bool> holdsUnsavedData(MountSession mount) {
    const std::function<bool()> work = [folder = mount.mountPoint, group = mount.process->group()] {
        const std::optional<ProcessGroup::Traffic> traffic = ProcessGroup::traffic(group);
        return (traffic && traffic->unsent >= uploadBytes) || anyWrittenBelow(folder);
    };
    const std::optional<bool> holds = co_await Async::onWorker(work);
    co_return *holds;
}

QCoro::Task<QStringList> transferringDomains(QList<MountSession> mounts, std::chrono::milliseconds time) {
    QStringList domains;
    if (mounts.isEmpty())
        co_return domains;
    const TrafficList before = co_await trafficOf(mounts);
    co_await Async::sleep(time);
    const TrafficList after = co_await trafficOf(mounts);
    for (qsizetype i = 0; i < mounts.size(); ++i) {
        if (isUploading(before.at(i), after.at(i)) || hasMoved(before.at(i), after.at(i)))
            domains.append(mounts.at(i).domain);
    }
    co_return domains;
}

QCoro::Task<QStringList> writtenDomains(QList<MountSession> mounts) {
    QStringList domains;
    if (mounts.isEmpty())
        co_return domains;
    const std::function<QList<bool>()> work = [mounts] {
        QList<bool> open;
        for (const MountSession& mount : mounts)
            open.append(anyWrittenBelow(mount.mountPoint));
        return open;
    };
    const TrafficList before = co_await trafficOf(mounts);
    const std::optional<QList<bool>> open = co_await Async::onWorker(work);
    co_await Async::sleep(sampleTime);
    const TrafficList after = co_await trafficOf(mounts);
    for (qsizetype i = 0; i < mounts.size(); ++i) {
        // A file that is being closed is not open any more, while sshfs still sends up to 8 MiB of it.
        if (isUploading(before.at(i), after.at(i)) || (open->at(i) && hasMoved(before.at(i), after.at(i))))
            domains.append(mounts.at(i).domain);
    }
    co_return domains;
}

namespace {
/// Whether the connection was silent and has been ended.
QCoro::Task<bool> renewSilentConnection(MountSession session, std::chrono::milliseconds silence) {
    const ServerState state = co_await serverState(session, silence);
    if (state != ServerState::silent || !session.process->isRunning())
        co_return false;
    const std::function<QList<qint64>()> work = [group = session.process->group()] {
        return ProcessGroup::members(group);
    };
    const std::optional<QList<qint64>> connections = co_await Async::onWorker(work);
    for (const qint64 process : *connections)
        ::kill(static_cast<pid_t>(process), SIGKILL);
    co_return !connections->isEmpty();
}

} // namespace

QCoro::Task<QStringList> renewSilentConnections(QList<MountSession> mounts,
                                                std::chrono::milliseconds silence) {
    std::vector<std::pair<QString, QCoro::Task<bool>>> renewing;
    for (const MountSession& mount : mounts)
        renewing.emplace_back(mount.domain, renewSilentConnection(mount, silence));
    QStringList renewed;
    for (auto& [domain, task] : renewing) {
        const bool ended = co_await task;
        if (ended)
            renewed.append(domain);
    }
    co_return renewed;
}
