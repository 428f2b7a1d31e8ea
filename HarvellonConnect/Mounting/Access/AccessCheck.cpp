#include "Mounting/Access/AccessCheck.h"

#include "System/Async.h"
#include "System/Ssh/SshOptions.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace {
using Progress = std::function<void(const QString& log)>;

/// A log that is being written, shared by the check and the watch beside it.
struct Log {
    explicit Log(const QString& folder) : place(folder + QStringLiteral("/pruefung-XXXXXX")) {}

    [[nodiscard]] QString path() const { return place.filePath(QStringLiteral("log")); }

    [[nodiscard]] QString text() const {
        constexpr qint64 most = 1024 * 1024;
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.read(most)) : QString();
    }

    QTemporaryDir place;
    bool complete = false;
};

/// What sshfs asks of ssh. An answer of a shared connection would say nothing about a new one.
QStringList arguments(const HostSystem& host, const QString& login, const QString& log) {
    QStringList options{QStringLiteral("-v"), QStringLiteral("-E"), log, QStringLiteral("-x"),
                        QStringLiteral("-a")};
    for (const char* option : {"StrictHostKeyChecking=yes", "ControlPath=none", "ClearAllForwardings=yes",
                               "RemoteCommand=none", "LogLevel=DEBUG1"})
        options += {QStringLiteral("-o"), QString::fromLatin1(option)};
    return options + ownTrustArguments(host) +
           QStringList{QStringLiteral("-s"), login, QStringLiteral("sftp")};
}

QCoro::Task<> watch(std::shared_ptr<Log> log, std::chrono::milliseconds silence, Progress silent,
                    std::function<void()> spoken) {
    QString before;
    QElapsedTimer unchanged;
    unchanged.start();
    bool told = false;
    while (!log->complete) {
        co_await Async::sleep(silence / 6);
        const std::function<QString()> read = [log] { return log->text(); };
        const std::optional<QString> now = co_await Async::onWorker(read);
        if (log->complete)
            co_return;
        if (*now != before) {
            before = *now;
            unchanged.restart();
            if (std::exchange(told, false))
                spoken();
        } else if (!told && std::chrono::milliseconds(unchanged.elapsed()) >= silence) {
            told = true;
            silent(before);
        }
    }
}
} // namespace

QCoro::Task<AccessFinding> checkAccess(HostSystem host, Shell& shell, QString login, QString domain,
                                       AccessLimits limits, Progress silent, std::function<void()> spoken) {
    const auto log = std::make_shared<Log>(host.privateFolder);
    const QStringList call = arguments(host, login, log->path());
    watch(log, limits.silence, std::move(silent), std::move(spoken));
    bool succeeded = false;
    bool late = false;
    QString failure;
    try {
        const ShellResult result = co_await shell.run(host.ssh, call, limits.check);
        succeeded = result.exitCode == 0;
        late = result.exitCode == Shell::timedOut;
    } catch (const ShellError& error) {
        failure = error.description();
    }
    log->complete = true;
    if (!failure.isEmpty())
        co_return AccessFinding{AccessStep::unclear, failure};
    const std::function<QString()> read = [log] { return log->text(); };
    const std::optional<QString> text = co_await Async::onWorker(read);
    if (late)
        co_return AccessFinding{AccessStep::unclear,
                                QStringLiteral("Die Prüfung hat nach %1 s noch kein Ergebnis.")
                                    .arg(std::chrono::ceil<std::chrono::seconds>(limits.check).count())};
    co_return readAccessLog(*text, succeeded, domain);
}
