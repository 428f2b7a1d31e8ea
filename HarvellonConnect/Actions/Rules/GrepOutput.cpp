#include "Actions/Rules/GrepOutput.h"

#include <QStringList>

#include <algorithm>
#include <optional>

namespace {
constexpr qsizetype longestText = 400;

QString printable(const QByteArray& bytes) {
    QString shown;
    for (const QChar character : QString::fromUtf8(bytes)) {
        switch (character.category()) {
        case QChar::Other_Format: // invisible, and able to turn the direction of a line
            break;
        case QChar::Other_Control:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            shown.append(character == QLatin1Char('\t') ? character : QChar(QChar::ReplacementCharacter));
            break;
        default:
            shown.append(character);
        }
    }
    return shown;
}

QString shortened(QByteArray line) {
    if (line.endsWith('\r'))
        line.chop(1);
    QString text = printable(line).left(longestText);
    if (!text.isEmpty() && text.back().isHighSurrogate())
        text.chop(1);
    return text;
}

/// The path below `folder`; nothing for a name that grep would not print for a file there.
std::optional<QString> localPath(const QByteArray& name, const QString& folder) {
    if (!name.startsWith("./"))
        return std::nullopt;
    const QString path = printable(name.mid(2));
    const QStringList parts = path.split(QLatin1Char('/'));
    const bool within = std::none_of(parts.begin(), parts.end(), [](const QString& part) {
        return part.isEmpty() || part == QLatin1String(".") || part == QLatin1String("..");
    });
    return within ? std::optional(folder + QLatin1Char('/') + path) : std::nullopt;
}
} // namespace

QString SearchHit::asLine() const {
    QString shown = path;
    shown.replace(QLatin1Char(':'), QChar(QChar::ReplacementCharacter));
    return shown + QLatin1Char(':') + QString::number(line) + QLatin1Char(':') + text;
}

SearchHits hitsIn(const QByteArray& output, const QString& folder, qsizetype mostHits) {
    SearchHits found;
    qsizetype position = 0;
    for (;;) {
        const qsizetype nameEnd = output.indexOf('\0', position);
        const qsizetype end = nameEnd < 0 ? -1 : output.indexOf('\n', nameEnd);
        if (end < 0)
            return found;
        const qsizetype numberEnd = output.indexOf(':', nameEnd);
        const QByteArray name = output.mid(position, nameEnd - position);
        position = end + 1;
        if (numberEnd < 0 || numberEnd > end)
            continue;
        bool numbered = false;
        const qint64 line = output.mid(nameEnd + 1, numberEnd - nameEnd - 1).toLongLong(&numbered);
        const std::optional<QString> path = localPath(name, folder);
        if (!path || !numbered || line < 1)
            continue;
        if (found.hits.size() == mostHits) {
            found.more = true;
            return found;
        }
        found.hits.append({*path, line, shortened(output.mid(numberEnd + 1, end - numberEnd - 1))});
    }
}
