#include "System/Network/ServerAddress.h"

#include <QHostAddress>
#include <QUrl>

namespace {
bool isLoopback(const QString& host) {
    const QHostAddress address(host);
    return host == QLatin1String("localhost") || (!address.isNull() && address.isLoopback());
}
} // namespace

ServerAddress ServerAddress::checked(const QString& text) {
    const QUrl url(text.trimmed(), QUrl::StrictMode);
    const bool plain = url.isValid() && !url.host().isEmpty() && url.userInfo().isEmpty() &&
                       !url.hasQuery() && !url.hasFragment();
    const bool secure = url.scheme() == QLatin1String("https");
    const bool local = url.scheme() == QLatin1String("http") && isLoopback(url.host());
    if (!plain || !(secure || local))
        return {QString(),
                QStringLiteral("Serveradresse %1 wird nicht verwendet: erlaubt sind https oder, nur auf "
                               "diesem Rechner, http.")
                    .arg(text.trimmed())};
    QString address = url.toString(QUrl::FullyEncoded);
    while (address.endsWith(QLatin1Char('/')))
        address.chop(1);
    return {address, QString()};
}

ServerAddress ServerAddress::configured(const QString& builtIn) {
    const QString text = qEnvironmentVariable("HARVELLON_SERVER");
    return checked(text.isEmpty() ? builtIn : text);
}
