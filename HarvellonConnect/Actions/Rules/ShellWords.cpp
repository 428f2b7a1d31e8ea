#include "Actions/Rules/ShellWords.h"

#include <algorithm>

namespace {
/// Characters that no shell gives a meaning inside a word.
bool isPlain(QChar character) {
    const bool alphanumeric = (character >= u'a' && character <= u'z') ||
                              (character >= u'A' && character <= u'Z') ||
                              (character >= u'0' && character <= u'9');
    return alphanumeric || QStringView(u"@%+:,./_-").contains(character);
}

QString shellWord(const QString& word) {
    if (!word.isEmpty() && std::all_of(word.begin(), word.end(), isPlain))
        return word;
    QString quoted = word;
    quoted.replace(QLatin1Char('\''), QLatin1String("'\\''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}
} // namespace

QString shellLine(const QStringList& words) {
    QStringList quoted;
    for (const QString& word : words)
        quoted.append(shellWord(word));
    return quoted.join(QLatin1Char(' '));
}
