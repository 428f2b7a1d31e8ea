#include "State/Diagnosis/Redaction.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <cctype>
#include <optional>

namespace {
constexpr qsizetype shortest = 4; ///< of what is found inside of words, too

/// The code of `digits` hexadecimal digits at `at`; nothing where others stand there.
std::optional<int> codeAt(const QByteArray& text, qsizetype at, qsizetype digits) {
    const QByteArray code = text.mid(at, digits);
    const bool hex = code.size() == digits && std::all_of(code.begin(), code.end(), [](char digit) {
                         return std::isxdigit(static_cast<unsigned char>(digit)) != 0;
                     });
    return hex ? std::optional(code.toInt(nullptr, 16)) : std::nullopt;
}

/// One step of decoding; what is not encoded stays. Of bytes, because the codes of one character may be
/// encoded to different depths.
QByteArray decodedOnce(const QByteArray& text) {
    constexpr qsizetype percentDigits = 2;
    constexpr qsizetype escapeDigits = 4;
    QByteArray result;
    for (qsizetype i = 0; i < text.size();) {
        if (const auto byte = codeAt(text, i + 1, percentDigits); text.at(i) == '%' && byte) {
            result += static_cast<char>(*byte);
            i += 1 + percentDigits;
            continue;
        }
        QString escaped; // the two halves of a character follow each other
        while (text.mid(i, 2) == "\\u") {
            const std::optional<int> code = codeAt(text, i + 2, escapeDigits);
            if (!code)
                break;
            escaped += QChar(static_cast<char16_t>(*code));
            i += 2 + escapeDigits;
        }
        result += escaped.toUtf8();
        if (escaped.isEmpty())
            result += text.at(i++);
    }
    return result.replace("\\/", "/").replace("\\\"", "\"");
}

QString canonical(const QString& text) {
    QByteArray bytes = text.toUtf8();
    constexpr int deepest = 8;
    for (int i = 0; i < deepest; ++i) {
        const QByteArray decoded = decodedOnce(bytes);
        if (decoded == bytes)
            break;
        bytes = decoded;
    }
    QString current = QString::fromUtf8(bytes);
    for (QChar& character : current) {
        if (character != QLatin1Char('\n') && character.category() == QChar::Other_Control)
            character = QLatin1Char(' ');
    }
    return current.normalized(QString::NormalizationForm_C);
}

/// Character by character, so that a text and a part of it are folded alike.
QString folded(const QString& text) {
    QString result;
    for (const QChar character : text)
        result += QString(character).toCaseFolded();
    return result;
}

/// Whether taking the value out of texts leaves anything of them.
bool isTelling(const QString& text) {
    const bool named =
        std::any_of(text.begin(), text.end(), [](QChar character) { return character.isLetter(); });
    const auto digits =
        std::count_if(text.begin(), text.end(), [](QChar character) { return character.isDigit(); });
    return named || digits >= shortest;
}

bool isWordPart(QChar character) {
    return character.isLetterOrNumber() || character == QLatin1Char('_');
}

const QString stop = QStringLiteral("\\s\"'„“”<>|,;()\\[\\]");

struct LookAlike {
    const char* kind;
    QRegularExpression pattern; ///< its last group is the value
};

const QList<LookAlike>& lookAlikes() {
    static const auto pattern = [](const QString& text) {
        return QRegularExpression(text, QRegularExpression::CaseInsensitiveOption |
                                            QRegularExpression::UseUnicodePropertiesOption);
    };
    static const QList<LookAlike> all{
        {"geheim", pattern(QStringLiteral("(?:bearer|token|code|state|secret|passwor[dt]|key)[\"']?\\s*[=:]"
                                          "\\s*[\"']?([^\\s\"'&,;]{4,})"))},
        {"geheim", pattern(QStringLiteral("\\((\\S{4,12}?)\\.\\.\\.\\)"))}, // the beginning of one
        {"datenbank", pattern(QStringLiteral("\\bDB (?:in Sequel Ace )?\\((\\S+?)\\)"))},
        {"ssh-benutzer", pattern(QStringLiteral("\\b(ssh\\d+)\\b"))},
        {"geheim", pattern(QStringLiteral("bearer\\s+([^\\s\"',;]{4,})"))},
        {"adresse", pattern(QStringLiteral("(?<![^%1:])((?!ssh\\d+@)[^%1:]+@[^%1:/]+)").arg(stop))},
        {"adresse", pattern(QStringLiteral("(?<![\\d.])(\\d{1,3}(?:\\.\\d{1,3}){3})(?![\\d.])"))},
        {"adresse",
         pattern(QStringLiteral("(?<![\\w:])((?:[0-9a-f]{1,4}:){5,}[0-9a-f]{1,4}|[0-9a-f:]*::[0-9a-f:.]+)"))},
        {"server", pattern(QStringLiteral("(?<!\\w)((?:[\\w](?:[\\w-]*[\\w])?\\.)+[\\p{L}][\\w-]+)"))},
        {"geheim", pattern(QStringLiteral("((?=[\\w+/=~-]*(?:\\d|(?-i:[a-z][A-Z])))[\\w+/=~-]{24,})"))},
    };
    return all;
}
} // namespace

Redaction::Redaction(const QString& home) : m_home(home) {}

void Redaction::insert(const QString& text, const QString& placeholder) {
    if (text.isEmpty() || m_placeholders.contains(text))
        return;
    m_placeholders.insert(text, placeholder);
    const QChar second = text.size() > 1 ? text.at(1) : QChar();
    QList<Needle>& needles = m_tree[text.at(0)][second];
    const Needle needle{text, placeholder, text.size() < shortest};
    const auto place =
        std::upper_bound(needles.begin(), needles.end(), needle, [](const Needle& one, const Needle& other) {
            return one.folded.size() > other.folded.size();
        });
    needles.insert(place, needle);
}

QString Redaction::placeholderFor(const QString& kind, const QString& text) {
    const auto known = m_placeholders.constFind(text);
    if (known != m_placeholders.constEnd())
        return *known;
    return QStringLiteral("%1-%2").arg(kind).arg(++m_numbers[kind]);
}

void Redaction::add(const QString& kind, const QString& value) {
    const QString text = folded(canonical(value)).trimmed();
    if (isTelling(text))
        addAs(placeholderFor(kind, text), value);
}

void Redaction::addAs(const QString& placeholder, const QString& value) {
    const QString text = canonical(value).trimmed();
    if (!isTelling(text))
        return;
    // Another case may take more letters, and an international domain has two forms.
    for (const QString& form : {text, text.toUpper(), text.toLower()}) {
        insert(folded(form), placeholder);
        insert(folded(QString(form).replace(QLatin1Char(' '), QLatin1Char('+'))), placeholder);
        if (!form.contains(QLatin1Char('.')))
            continue;
        const QByteArray ace = QUrl::toAce(form);
        insert(folded(QString::fromLatin1(ace)), placeholder);
        insert(folded(QUrl::fromAce(ace)), placeholder);
        insert(folded(QUrl::fromAce(form.toLatin1())), placeholder);
    }
}

void Redaction::addLookAlikes(const QString& text) {
    // A folder's name may hold blanks, and so may the last name where the path ends a line after a colon.
    static const QRegularExpression path(
        QStringLiteral("(?<![\\p{L}\\p{N}/~.-])(/(?:[^\"'„“”<>|,;:/\\n]{1,80}/)*[^%1:/]*)").arg(stop),
        QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression lastPath(QStringLiteral(": (/[^\n]*)$"),
                                             QRegularExpression::MultilineOption);
    static const QRegularExpression ending(QStringLiteral("[\\s.!?)]+$"));
    static const QStringList systems{QStringLiteral("/usr/"),     QStringLiteral("/bin/"),
                                     QStringLiteral("/sbin/"),    QStringLiteral("/etc/"),
                                     QStringLiteral("/opt/"),     QStringLiteral("/System/"),
                                     QStringLiteral("/Library/"), QStringLiteral("/Applications/"),
                                     QStringLiteral("/dev/"),     QStringLiteral("/proc/")};
    for (const QRegularExpression& pattern : {lastPath, path}) {
        for (auto matches = pattern.globalMatch(text); matches.hasNext();) {
            const QString found = matches.next().captured(1).remove(ending);
            const bool system = std::any_of(systems.begin(), systems.end(),
                                            [&](const QString& prefix) { return found.startsWith(prefix); });
            if (!system && found != m_home && found.size() >= shortest)
                add(QStringLiteral("pfad"), found);
        }
    }
    for (const LookAlike& look : lookAlikes()) {
        for (auto matches = look.pattern.globalMatch(text); matches.hasNext();)
            add(QString::fromLatin1(look.kind), matches.next().captured(1));
    }
}

QString Redaction::redacted(const QString& original) {
    const QString text = canonical(original);
    addLookAlikes(text);
    // Folding may change the length: each folded character knows whose it is.
    QString search;
    QList<qsizetype> owner;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QString each = QString(text.at(i)).toCaseFolded();
        search += each;
        owner.insert(owner.size(), each.size(), i);
    }
    owner.append(text.size());
    QString result;
    qsizetype copied = 0;
    for (qsizetype at = 0; at < search.size();) {
        const Needle* found = nullptr;
        const auto& seconds = m_tree.constFind(search.at(at));
        for (const QChar second : {at + 1 < search.size() ? search.at(at + 1) : QChar(), QChar()}) {
            if (seconds == m_tree.constEnd() || found)
                break;
            const auto needles = seconds->constFind(second);
            if (needles == seconds->constEnd())
                continue;
            for (const Needle& needle : *needles) {
                const qsizetype end = at + needle.folded.size();
                if (QStringView(search).mid(at, needle.folded.size()) != needle.folded)
                    continue;
                const bool inWord = (at > 0 && isWordPart(search.at(at - 1))) ||
                                    (end < search.size() && isWordPart(search.at(end)));
                if (needle.wholeWord && inWord)
                    continue;
                found = &needle;
                break;
            }
        }
        if (!found) {
            ++at;
            continue;
        }
        result += text.mid(copied, owner.at(at) - copied) + found->placeholder;
        at += found->folded.size();
        copied = owner.at(at);
    }
    return result + text.mid(copied);
}
