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
