#include "Directory/PlainDomain.h"

#include "System/Text.h"

#include <QUrl>

#include <algorithm>

namespace {
constexpr qsizetype longestDomain = 253;

/// A user's own ssh configuration may pass the name to a shell, so that blanks and signs must be missing.
bool isPlain(uint character) {
    return QChar::isLetter(character) || QChar::isDigit(character) || QChar::isMark(character) ||
           character == '-' || character == '_' || character == '.';
}
} // namespace

bool isPlainDomain(const QString& domain) {
    if (domain.size() > longestDomain || domain.endsWith(QLatin1Char('.')))
        return false;
    const QList<uint> characters = domain.toUcs4();
    // Empty for empty or overlong labels, and for a hyphen at the edge of one.
    const QByteArray ascii = QUrl::toAce(domain);
    if (ascii.isEmpty() || ascii.size() > longestDomain ||
        !std::all_of(characters.begin(), characters.end(), isPlain))
        return false;
    QUrl url;
    url.setHost(domain, QUrl::StrictMode);
    if (QUrl::toAce(url.host()) != ascii) // a number, which is read as an address
        return false;
    // Browsers translate some letters to others, which ssh does not.
    const QString folded = domain.toLower();
    return folded == QLatin1String(ascii) || folded == QUrl::fromAce(ascii, QUrl::IgnoreIDNWhitelist);
}

bool isPlainSite(const QString& domain) {
    const qsizetype colon = domain.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return isPlainDomain(domain);
    const QString port = domain.mid(colon + 1);
    const bool digits = std::all_of(port.begin(), port.end(), [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    });
    return digits && port.toUShort() != 0 && isPlainDomain(domain.left(colon));
}

QString printableDomain(const QString& domain) {
    return printable(domain.left(longestDomain));
}
