#include "Mounting/Access/ServerKey.h"

#include "Mounting/Access/OfferedKey.h"
#include "System/Async.h"
#include "System/AtomicFile.h"
#include "System/Ssh/SshOptions.h"

#include <QFile>
#include <QTemporaryDir>

using namespace std::chrono_literals;

namespace {
constexpr QFile::Permissions privateFile = QFile::ReadOwner | QFile::WriteOwner;
const QString keygen = QStringLiteral("/usr/bin/ssh-keygen");
constexpr std::chrono::milliseconds toolLimit = 5s;
constexpr std::chrono::milliseconds serverLimit = 20s; // ssh itself gives up after ten seconds of silence

struct Folder {
    explicit Folder(const HostSystem& host)
        : place(host.privateFolder + QStringLiteral("/schluessel-XXXXXX")) {
        if (!place.isValid())
            throw ServerKeyError(place.errorString());
    }

    [[nodiscard]] QString list() const { return place.filePath(QStringLiteral("known_hosts")); }

    QTemporaryDir place;
};

/// Nothing where the file cannot be read: a list that is taken for empty would be replaced.
std::optional<QByteArray> content(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.exists() ? std::nullopt : std::optional(QByteArray());
    const QByteArray text = file.readAll();
    return file.error() == QFile::NoError ? std::optional(text) : std::nullopt;
}

QCoro::Task<QByteArray> contentOf(QString path) {
    using Content = std::optional<QByteArray>;
    const std::function<Content()> read = [path] { return content(path); };
    const std::optional<Content> text = co_await Async::onWorker(read);
    if (!*text)
        throw ServerKeyError(
            QStringLiteral("Die Liste der bekannten Server konnte nicht gelesen werden: %1").arg(path));
    co_return **text;
}

QCoro::Task<ShellResult> run(Shell& shell, QString executable, QStringList arguments,
                             std::chrono::milliseconds limit) {
    try {
        co_return co_await shell.run(executable, arguments, limit);
    } catch (const ShellError& error) {
        throw ServerKeyError(error.description());
    }
}

/// ssh enters the key into a list of its own and is then refused, because it offers no way to log in.
QStringList askForKey(const QString& login, const QString& list) {
    QStringList arguments{QStringLiteral("-T"), QStringLiteral("-n"), QStringLiteral("-x"),
                          QStringLiteral("-a")};
    for (const char* option :
         {"BatchMode=yes", "ConnectTimeout=10", "StrictHostKeyChecking=accept-new",
          "GlobalKnownHostsFile=/dev/null", "HashKnownHosts=no", "CheckHostIP=no", "UpdateHostKeys=no",
          "PreferredAuthentications=none", "PubkeyAuthentication=no", "ControlPath=none",
          "ClearAllForwardings=yes", "RemoteCommand=none"})
        arguments += {QStringLiteral("-o"), QString::fromLatin1(option)};
    return arguments + QStringList{QStringLiteral("-o"),
                                   QStringLiteral("UserKnownHostsFile=") + sshPath(list), login,
                                   QStringLiteral("true")};
}
} // namespace

QCoro::Task<ServerKey> lookAtServerKey(HostSystem host, Shell& shell, QString login) {
    ServerKey key;
    const QStringList asking{QStringLiteral("-G"), login};
    const ShellResult settings = co_await run(shell, host.ssh, asking, toolLimit);
    key.name = SshSettings::read(settings.stdout, host.homeFolder).knownName;
    const QStringList finding{QStringLiteral("-F"), key.name, QStringLiteral("-f"), host.knownHostsFile()};
    const ShellResult found = co_await run(shell, keygen, finding, toolLimit);
    key.known = hostKeysIn(found.bytes);

    const auto folder = std::make_shared<Folder>(host);
    const QString list = folder->list();
    const QStringList call = askForKey(login, list);
    co_await run(shell, host.ssh, call, serverLimit);
    const QByteArray lines = co_await contentOf(list);
    const QList<HostKey> presented = hostKeysIn(lines);
    if (key.name.isEmpty() || presented.isEmpty())
        throw ServerKeyError(QStringLiteral("Der Schlüssel des Servers war nicht zu lesen."));
    key.presented = presented.first();
    key.line = lineWith(key.presented, lines);
    co_return key;
}

QCoro::Task<> trustServerKey(HostSystem host, Shell& shell, ServerKey key) {
    const QString list = host.knownHostsFile();
    const auto folder = std::make_shared<Folder>(host);
    const QString copy = folder->list();
    // A mount that runs meanwhile may enter another server: then the copy is made anew.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const QByteArray before = co_await contentOf(list);
        const std::function<bool()> makeCopy = [copy, before] {
            return writeAtomically(copy, before, privateFile);
        };
        const std::optional<bool> copied = co_await Async::onWorker(makeCopy);
        if (!*copied)
            break;
        if (!key.known.isEmpty()) {
            const QStringList removing{QStringLiteral("-R"), key.name, QStringLiteral("-f"), copy};
            const ShellResult removed = co_await run(shell, keygen, removing, toolLimit);
            if (removed.exitCode != 0)
                throw ServerKeyError(removed.stderr.trimmed());
        }
        const std::function<std::optional<bool>()> replace = [list, copy, before,
                                                              line = key.line]() -> std::optional<bool> {
            std::optional<QByteArray> lines = content(copy);
            if (!lines)
                return false;
            if (!lines->isEmpty() && !lines->endsWith('\n'))
                lines->append('\n');
            if (content(list) != before)
                return std::nullopt;
            return writeAtomically(list, *lines + line + '\n', privateFile);
        };
        const auto replaced = co_await Async::onWorker(replace);
        if (*replaced == true)
            co_return;
        if (*replaced == false)
            break;
    }
    throw ServerKeyError(
        QStringLiteral("Die Liste der bekannten Server konnte nicht geschrieben werden: %1").arg(list));
}
