#include "Mounting/Access/OwnKey.h"

#include "System/Async.h"

#include <QFileInfo>

using namespace std::chrono_literals;

namespace {
const QString keygen = QStringLiteral("/usr/bin/ssh-keygen");
constexpr std::chrono::milliseconds toolLimit = 3s;

QCoro::Task<ShellResult> run(Shell& shell, QString executable, QStringList arguments) {
    try {
        co_return co_await shell.run(executable, arguments, toolLimit);
    } catch (const ShellError&) {
        co_return ShellResult{Shell::timedOut, {}, {}};
    }
}

QCoro::Task<QByteArray> keysOfAgent(Shell& shell, QString agent) {
    if (agent == QLatin1String("none"))
        co_return QByteArray();
    const QString list = QStringLiteral("/usr/bin/ssh-add");
    QStringList call{list, QStringLiteral("-L")};
    if (!agent.isEmpty())
        call.prepend(QStringLiteral("SSH_AUTH_SOCK=") + agent);
    const QString environment = QStringLiteral("/usr/bin/env");
    const ShellResult keys = co_await run(shell, environment, call);
    co_return keys.exitCode == 0 ? keys.bytes : QByteArray();
}

struct OnDisk {
    QList<PublicKey> keys;
    QStringList withoutPublicHalf;
    bool placeIsFree = false;
    QStringList folders;
};

/// The folder of `path`, or the nearest above it that exists: there the missing one will appear.
QString existingFolder(const QString& path) {
    QString folder = QFileInfo(path).absolutePath();
    while (!QFileInfo(folder).isDir())
        folder = QFileInfo(folder).absolutePath();
    return folder;
}

OnDisk lookAt(const QStringList& identityFiles, const QString& place) {
    const bool taken = QFileInfo::exists(place) || QFileInfo(place).isSymLink() ||
                       QFileInfo::exists(place + QStringLiteral(".pub"));
    OnDisk disk{
        publicKeysBeside(identityFiles), withoutPublicHalf(identityFiles), !place.isEmpty() && !taken, {}};
    for (const QString& file : identityFiles)
        disk.folders.append(existingFolder(file));
    disk.folders.removeDuplicates();
    return disk;
}
} // namespace

QCoro::Task<OwnKey> findOwnKey(HostSystem host, Shell& shell, QString login) {
    OwnKey own;
    const QStringList asking{QStringLiteral("-G"), login};
    const ShellResult answer = co_await run(shell, host.ssh, asking);
    const SshSettings settings = SshSettings::read(answer.stdout, host.homeFolder);
    const QString place = placeForNewKey(settings.identityFiles).value_or(QString());
    const QStringList files = settings.identityFiles;
    const std::function<OnDisk()> look = [files, place] { return lookAt(files, place); };
    const std::optional<OnDisk> found = co_await Async::onWorker(look, toolLimit); // a home may be far away
    const OnDisk disk = found.value_or(OnDisk());
    const QByteArray agentKeys = co_await keysOfAgent(shell, settings.agent);
    own.key = firstOffered(settings, disk.keys, agentKeys);
    for (const QString& file : disk.withoutPublicHalf) {
        if (own.key)
            break;
        const QStringList reading{QStringLiteral("-y"), QStringLiteral("-P"), QString(), QStringLiteral("-f"),
                                  file};
        const ShellResult half = co_await run(shell, keygen, reading);
        own.key = publicKeyIn(half.bytes, file);
        if (own.unreadable.isEmpty())
            own.unreadable = file;
    }
    if (disk.placeIsFree)
        own.place = place;
    own.folders = disk.folders;
    co_return own;
}
