#include "System/Network/ServerAddress.h"

#include <QHostAddress>
#include <QUrl>

namespace {
bool isLoopback(const QString& host) {
    const QHostAddress address(host);
    return host == QLatin1String("localhost") || (!address.isNull() && address.isLoopback());
}

/// Why `url` must not be used; nothing when all is well.
QString objection(const QUrl& url) {
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        return QStringLiteral("das ist keine Adresse wie https://rechner.example.");
    const bool root = url.path().isEmpty() || url.path() == QLatin1String("/");
    if (!root || !url.userInfo().isEmpty() || url.hasQuery() || url.hasFragment())
        return QStringLiteral("sie darf nur aus Schema, Rechnername und Port bestehen.");
    const bool secure = url.scheme() == QLatin1String("https");
    const bool local = url.scheme() == QLatin1String("http") && isLoopback(url.host());
    if (!secure && !local)
        return QStringLiteral("erlaubt sind https oder, nur auf diesem Rechner, http.");
    return {};
}
} // namespace

ServerAddress ServerAddress::checked(const QString& text) {
    const QUrl url(text.trimmed(), QUrl::StrictMode);
    if (const QString problem = objection(url); !problem.isEmpty()) {
        const QString shown = text.trimmed().section(QLatin1Char('@'), -1); // before it is a password
        return {QString(), QStringLiteral("Serveradresse %1 wird nicht verwendet: ").arg(shown) + problem};
    }
    return {url.toString(QUrl::FullyEncoded | QUrl::RemovePath), QString()};
}

ServerAddress ServerAddress::configured(const QString& builtIn) {
    const QString text = qEnvironmentVariable("HARVELLON_SERVER");
    return checked(text.isEmpty() ? builtIn : text);
}
