#include "Actions/Rules/SearchDomain.h"

#include <QUrl>

std::optional<QString> searchDomain(const QString& urlText) {
    const QUrl url(urlText, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty() || url.host().isEmpty())
        return std::nullopt;
    // QUrl lower-cases the host, so it is taken from the text: behind "//", the user and "@", before port and
    // path.
    QString host = urlText.mid(urlText.indexOf(QLatin1String("//")) + 2);
    for (const char end : {'/', '?', '#'})
        host = host.section(QLatin1Char(end), 0, 0);
    host = host.mid(host.lastIndexOf(QLatin1Char('@')) + 1);
    if (host.startsWith(QLatin1Char('[')))
        host = host.mid(1, host.indexOf(QLatin1Char(']')) - 1);
    else
        host = host.section(QLatin1Char(':'), 0, 0);
    if (host.startsWith(QLatin1String("www.")))
        host.remove(0, 4);
    return host;
}
