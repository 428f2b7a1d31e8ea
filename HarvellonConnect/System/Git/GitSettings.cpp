#include "System/Git/GitSettings.h"

#include "System/AtomicFile.h"
#include "System/Git/GitFiles.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {
constexpr std::chrono::seconds readLimit{10};
// A git that is killed leaves its lock behind, and nobody can change the configuration any more.
constexpr std::chrono::milliseconds writeLimit = Shell::noLimit;
constexpr qint32 nothingFound = 1; // the exit code of git config
const QString key = QStringLiteral("include.path");

/// An entry of ours, and the file of the user that holds it.
struct Entry {
    QString file;
    QString value;
};

QString gitPath(const HostSystem& host) {
    for (const QString& path : host.gitCandidates) {
        const QFileInfo file(path);
        if (file.isFile() && file.isExecutable())
            return path;
    }
    return {};
}

/// The arguments of /usr/bin/env for a git that knows this program's home folder.
QStringList configCommand(const HostSystem& host) {
    return host.gitEnvironment +
           QStringList{gitPath(host), QStringLiteral("-C"), host.homeFolder, QStringLiteral("config")};
}

QCoro::Task<ShellResult> runConfig(HostSystem host, Shell& shell, QStringList arguments,
                                   std::chrono::milliseconds limit) {
    const QString env = QStringLiteral("/usr/bin/env");
    const QStringList command = configCommand(host) + arguments;
    return shell.run(env, command, limit);
}

/// Below the home folder "~" stands for it, because a configuration may be shared between machines.
QString includedPath(const HostSystem& host) {
    const QString path = GitFiles::configPath(host);
    const QString home = host.homeFolder + QLatin1Char('/');
    return path.startsWith(home) ? QStringLiteral("~/") + path.mid(home.size()) : path;
}

/// Reads what `git config --show-origin --null --get-all` prints: file and value, one after the other.
QList<Entry> ownEntries(const QString& listed, const HostSystem& host) {
    const QLatin1StringView fileMark("file:");
    const QStringList fields = listed.split(QChar(QChar::Null));
    QList<Entry> entries;
    for (qsizetype i = 0; i + 1 < fields.size(); i += 2) {
        const QString& value = fields.at(i + 1);
        if (fields.at(i).startsWith(fileMark) &&
            (value == includedPath(host) || value == GitFiles::configPath(host)))
            entries.append({fields.at(i).mid(fileMark.size()), value});
    }
    return entries;
}

void throwUnless(bool good, const ShellResult& result) {
    const QString reason = result.stderr.trimmed();
    if (!good)
        throw GitError(reason.isEmpty() ? QStringLiteral("git endet mit Exit %1.").arg(result.exitCode)
                                        : reason);
}

/// Asks for all files that git reads, because the entry may stand in one that the user's own file includes.
QCoro::Task<QList<Entry>> findEntries(HostSystem host, Shell& shell) {
    const QStringList query{QStringLiteral("--show-origin"), QStringLiteral("--null"),
                            QStringLiteral("--get-all"), key};
    const ShellResult result = co_await runConfig(host, shell, query, readLimit);
    throwUnless(result.exitCode == 0 || result.exitCode == nothingFound, result);
    co_return ownEntries(result.stdout, host);
}

QCoro::Task<> change(HostSystem host, Shell& shell, QStringList arguments) {
    const ShellResult result = co_await runConfig(host, shell, arguments, writeLimit);
    throwUnless(result.exitCode == 0, result);
}

void throwWithoutGit(const HostSystem& host) {
    if (!GitSettings::canBeOn(host))
        throw GitError(QStringLiteral("git ist nicht installiert."));
}

/// git compares with real paths. The mount root itself is a folder of this machine.
QString realMountRoot(const HostSystem& host) {
    const QString real = QFileInfo(host.mountRoot()).canonicalFilePath();
    return real.isEmpty() ? host.mountRoot() : real;
}
} // namespace

bool GitSettings::canBeOn(const HostSystem& host) {
    return !gitPath(host).isEmpty();
}

QCoro::Task<bool> GitSettings::areOn(HostSystem host, Shell& shell) {
    if (!canBeOn(host))
        co_return false;
    try {
        const QList<Entry> entries = co_await findEntries(host, shell);
        co_return !entries.isEmpty();
    } catch (const Failure&) {
        co_return false;
    }
}

QCoro::Task<> GitSettings::turnOn(HostSystem host, Shell& shell, QStringList trusted) {
    throwWithoutGit(host);
    if (!trust(host, trusted))
        throw GitError(QStringLiteral("%1 kann nicht geschrieben werden.").arg(GitFiles::configPath(host)));
    const QList<Entry> entries = co_await findEntries(host, shell);
    if (!entries.isEmpty())
        co_return;
    const QStringList addition{QStringLiteral("--global"), QStringLiteral("--add"), key, includedPath(host)};
    co_await change(host, shell, addition);
}

QCoro::Task<> GitSettings::turnOff(HostSystem host, Shell& shell) {
    throwWithoutGit(host);
    const QList<Entry> entries = co_await findEntries(host, shell);
    for (const Entry& entry : entries) {
        const QStringList removal{QStringLiteral("--file"),      entry.file, QStringLiteral("--fixed-value"),
                                  QStringLiteral("--unset-all"), key,        entry.value};
        co_await change(host, shell, removal);
    }
    QFile::remove(GitFiles::configPath(host));
    QFile::remove(GitFiles::mountsPath(host));
}

bool GitSettings::trust(const HostSystem& host, const QStringList& trusted) {
    return QDir().mkpath(QFileInfo(GitFiles::configPath(host)).path()) &&
           writeAtomically(GitFiles::mountsPath(host), GitFiles::mounts()) &&
           writeAtomically(GitFiles::configPath(host), GitFiles::config(realMountRoot(host), trusted));
}
