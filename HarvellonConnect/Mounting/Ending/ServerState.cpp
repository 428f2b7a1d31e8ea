#include "Mounting/Ending/ServerState.h"

#include "Mounting/MountQuestions.h"
#include "Mounting/SSHFSProcess.h"
#include "Mounting/WarmUp/WarmUp.h"
#include "System/Async.h"
#include "System/Tables/MountTable.h"
#include "System/Tables/OpenFiles.h"
#include "System/Tables/ProcessGroup.h"

#include <QDeadlineTimer>
#include <QFileInfo>

#include <algorithm>
#include <csignal>

namespace {
constexpr std::chrono::milliseconds step{250};
constexpr std::chrono::milliseconds sampleTime{400};
constexpr int mostSamples = 7;
constexpr std::chrono::milliseconds answerTime{1'000};
constexpr std::chrono::milliseconds openFilesTime{3'000}; // see OpenFiles; usually some milliseconds
constexpr quint64 requestBytes =
    400; // the smallest write and its answer; a keep-alive message moves about 150
constexpr quint64 uploadBytes = 1024; // a question is shorter

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

/// Whether more than a keep-alive message went over the line. True where nobody knows.
bool hasMoved(const std::optional<ProcessGroup::Traffic>& before,
              const std::optional<ProcessGroup::Traffic>& after) {
    return !before || !after || after->bytes - std::min(before->bytes, after->bytes) >= requestBytes;
}

/// Whether the line carries anything, however slowly. A keep-alive message does not count, since it is sent
/// on a dead line too.
bool progressed(const TrafficList& before, const TrafficList& after) {
    if (!before.first() || !after.first())
        return false; // nobody knows
    return hasMoved(before.first(), after.first()) || after.first()->unsent < before.first()->unsent;
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
    const QDeadlineTimer whole(2 * silence);
    TrafficList moved = co_await trafficOf(mounts);
    for (;;) {
        const bool answered = co_await Async::finishesWithin(answer, std::min(step, silence));
        if (answered)
            co_return answer.result() ? ServerState::answering : ServerState::lost;
        const TrafficList now = co_await trafficOf(mounts);
        if (progressed(moved, now)) {
            if (whole.hasExpired())
                co_return ServerState::slow;
            moved = now;
            quiet.setRemainingTime(silence);
        } else if (quiet.hasExpired()) {
            co_return ServerState::silent;
        }
    }
}

QCoro::Task<bool> holdsUnsavedData(MountSession mount, std::chrono::milliseconds limit) {
    const std::function<bool()> work = [folder = mount.mountPoint, group = mount.process->group()] {
        const std::optional<ProcessGroup::Traffic> traffic = ProcessGroup::traffic(group);
        return (traffic && traffic->unsent >= uploadBytes) || anyWrittenBelow(folder);
    };
    const std::optional<bool> holds = co_await Async::onWorker(work, limit);
    co_return holds.value_or(true);
}

QCoro::Task<bool> isTransferring(MountSession mount, std::chrono::milliseconds time) {
    const QList<MountSession> mounts{mount};
    const TrafficList before = co_await trafficOf(mounts);
    co_await Async::sleep(time);
    const TrafficList after = co_await trafficOf(mounts);
    co_return before.first() &&
        (isUploading(before.first(), after.first()) || hasMoved(before.first(), after.first()));
}

QCoro::Task<QStringList> writtenDomains(QList<MountSession> mounts, QList<MountSession> detached) {
    const std::function<QList<bool>()> work = [mounts] {
        QList<bool> open;
        for (const MountSession& mount : mounts) // what is being detached cannot be found by its path
            open.append(!MountTable::lists(mount.mountPoint) || anyWrittenBelow(mount.mountPoint));
        return open;
    };
    QList<QFuture<void>> readers;
    for (const MountSession& mount : mounts)
        readers.append(mount.warmUp->cancel());
    co_await Async::allFinishWithin(readers, answerTime); // their traffic would look like data being written
    const QList<MountSession> all = mounts + detached;
    QStringList domains;
    if (all.isEmpty())
        co_return domains;
    const TrafficList before = co_await trafficOf(all);
    const std::optional<QList<bool>> found = co_await Async::onWorker(work, openFilesTime);
    const QList<bool> open =
        found.value_or(QList<bool>(mounts.size(), true)) + QList<bool>(detached.size(), true);
    for (int sample = 0; sample < mostSamples && domains.isEmpty(); ++sample) {
        co_await Async::sleep(sampleTime);
        const TrafficList after = co_await trafficOf(all);
        for (qsizetype i = 0; i < all.size(); ++i) {
            // A file that is being closed is not open any more, while sshfs still sends up to 8 MiB of it.
            if (isUploading(before.at(i), after.at(i)) || (open.at(i) && hasMoved(before.at(i), after.at(i))))
                domains.append(all.at(i).domain);
        }
        if (!open.contains(true))
            break;
    }
    // A server that has stopped takes nothing, so nothing moves, and a save may be waiting for it all the
    // same. Asked last, because the question would look like a write.
    for (qsizetype i = 0; i < mounts.size() && domains.isEmpty(); ++i) {
        if (open.at(i) && MountTable::lists(mounts.at(i).mountPoint)) {
            const QFuture<bool> answer = mounts.at(i).questions->serverAnswers();
            const bool answered = co_await Async::finishesWithin(answer, answerTime);
            if (!answered)
                domains.append(mounts.at(i).domain);
        }
    }
    domains.removeDuplicates();
    co_return domains;
}

QCoro::Task<bool> renewSilentConnection(MountSession mount, SilenceLimits limits) {
    mount.warmUp->cancel(); // its requests would look like unsaved data
    ServerState state = co_await serverState(mount, limits.idle);
    const bool unsaved = co_await holdsUnsavedData(mount, limits.idle);
    if (state == ServerState::silent && unsaved) {
        const QList<MountSession> mounts{mount};
        const TrafficList traffic = co_await trafficOf(mounts);
        if (!traffic.first())
            co_return false;
        state = co_await serverState(mount, limits.writing);
    }
    if (state != ServerState::silent || !mount.process->isRunning())
        co_return false;
    const std::function<QList<qint64>()> work = [group = mount.process->group()] {
        return ProcessGroup::members(group);
    };
    const std::optional<QList<qint64>> connections = co_await Async::onWorker(work);
    for (const qint64 process : *connections)
        ::kill(static_cast<pid_t>(process), SIGKILL);
    co_return !connections->isEmpty();
}
