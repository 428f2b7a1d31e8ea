#include "System/Tables/MountTable.h"

#include <QFile>

namespace {
/// The kernel writes blanks, tabs, line feeds and backslashes as three octal digits.
QByteArray unescaped(const QByteArray& field) {
    QByteArray text;
    for (qsizetype i = 0; i < field.size(); ++i) {
        bool octal = false;
        const int code = field.at(i) == '\\' ? field.mid(i + 1, 3).toInt(&octal, 8) : 0;
        text.append(octal ? static_cast<char>(code) : field.at(i));
        i += octal ? 3 : 0;
    }
    return text;
}
} // namespace

QList<MountTable::Entry> MountTable::entries() {
    constexpr qsizetype mountPointField = 4;
    constexpr qsizetype fieldsAfterMark = 3;
    QList<Entry> mounts;
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    if (!table.open(QIODevice::ReadOnly))
        return mounts;
    const QByteArray text = table.readAll(); // all at once: the table may change between two reads
    for (const QByteArray& line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype mark = fields.indexOf("-", mountPointField); // optional fields end with a dash
        if (mark < 0 || fields.size() < mark + fieldsAfterMark)
            continue;
        mounts.append({QFile::decodeName(unescaped(fields.at(mountPointField))),
                       QFile::decodeName(unescaped(fields.at(mark + 2))),
                       QString::fromLatin1(fields.at(mark + 1))});
    }
    return mounts;
}
