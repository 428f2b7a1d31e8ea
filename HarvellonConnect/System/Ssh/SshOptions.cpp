#include "System/Ssh/SshOptions.h"

#include <algorithm>

QString sshPath(const QString& path) {
    QString text = path;
    text.replace(QLatin1Char('%'), QStringLiteral("%%"));
    const bool needsQuotes = std::any_of(text.begin(), text.end(), [](QChar character) {
        return character.isSpace() || character == QLatin1Char('"') || character == QLatin1Char('\'') ||
               character == QLatin1Char('\\') || character == QLatin1Char('#');
    });
    if (!needsQuotes)
        return text;
    text.replace(QLatin1Char('\\'), QStringLiteral("\\\\")).replace(QLatin1Char('"'), QStringLiteral("\\\""));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QStringList ownTrustArguments(const HostSystem& host) {
    return {QStringLiteral("-o"), QStringLiteral("BatchMode=yes"),
            QStringLiteral("-o"), QStringLiteral("ConnectTimeout=10"),
            QStringLiteral("-o"), QStringLiteral("StrictHostKeyChecking=accept-new"),
            QStringLiteral("-o"), QStringLiteral("UserKnownHostsFile=") + sshPath(host.knownHostsFile())};
}

QStringList noForwardings() {
    return {QStringLiteral("-o"), QStringLiteral("ClearAllForwardings=yes")};
}

QStringList masterArguments(const HostSystem& host, const QString& socket, const QString& login,
                            std::chrono::seconds idle) {
    const QStringList connection{QStringLiteral("-M"), QStringLiteral("-N"),
                                 QStringLiteral("-S"), socket,
                                 QStringLiteral("-o"), QStringLiteral("ControlPersist=%1").arg(idle.count()),
                                 QStringLiteral("-o"), QStringLiteral("ServerAliveInterval=15"),
                                 QStringLiteral("-o"), QStringLiteral("ServerAliveCountMax=3")};
    return connection + ownTrustArguments(host) + noForwardings() + QStringList{login};
}
