#include "Directory/PlainDomain.h"

#include <algorithm>

namespace {
// No host name contains these. They are special to the file system, to sshfs, or to a shell: a user's own ssh
// configuration may pass the host name to one.
const QString specialCharacters = QStringLiteral("/\\:@[](){}<>|&;$`'\"");
} // namespace

bool isPlainDomain(const QString& domain) {
    if (domain.isEmpty() || domain.startsWith(QLatin1Char('-')) || domain == QLatin1String(".") ||
        domain == QLatin1String(".."))
        return false;
    return std::all_of(domain.begin(), domain.end(), [](QChar character) {
        return !character.isSpace() && character.category() != QChar::Other_Control &&
               character.category() != QChar::Other_Format && !specialCharacters.contains(character);
    });
}
