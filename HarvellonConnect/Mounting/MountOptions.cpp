#include "Mounting/MountOptions.h"

#include "Directory/PlainDomain.h"
#include "Mounting/MounterError.h"
#include "System/Ssh/SshOptions.h"

#include <algorithm>

namespace {
constexpr qsizetype longestName = 200; // the kernel refuses an option string of a few thousand characters

/// A NUL character would truncate the option string.
QString withoutControls(QString text) {
    std::replace_if(
        text.begin(), text.end(),
        [](QChar character) { return character.category() == QChar::Other_Control; }, QLatin1Char(' '));
    return text;
}
} // namespace

void throwUnlessPlain(const Project& project) {
    if (!isPlainDomain(project.domain))
        throw MounterError(
            MounterError::Case::mountFailed,
            QStringLiteral("Die Domain „%1\" ist nicht zulässig.").arg(printableDomain(project.domain)));
    if (project.path.contains(QChar(QChar::Null)))
        throw MounterError(MounterError::Case::mountFailed,
                           QStringLiteral("Der Pfad des Projekts auf dem Server ist nicht zulässig."));
}

QString optionValue(const QString& value) {
    QString text = value;
    return text.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
        .replace(QLatin1Char(','), QStringLiteral("\\,"));
}

QString mountOptions(const HostSystem& host, const Project& project, Links links) {
    QStringList options{QStringLiteral("reconnect"), QStringLiteral("ServerAliveInterval=15"),
                        QStringLiteral("ServerAliveCountMax=3")};
    options += host.platformMountOptions;
    if (links == Links::server)
        options += QStringLiteral("follow_symlinks");
    options += host.volumeNameOption + QStringLiteral("=HV ") +
               optionValue(withoutControls(project.title().left(longestName)));
    options += QStringLiteral("StrictHostKeyChecking=accept-new");
    options += QStringLiteral("UserKnownHostsFile=") + optionValue(sshPath(host.knownHostsFile()));
    return options.join(QLatin1Char(','));
}

QStringList sshfsArguments(const HostSystem& host, const Project& project, const QString& mountPoint,
                           Links links) {
    const QString remote =
        project.sshUser() + QLatin1Char('@') + project.domain + QLatin1Char(':') + project.path;
    return {remote, mountPoint, QStringLiteral("-o"), mountOptions(host, project, links),
            QStringLiteral("-f")};
}
