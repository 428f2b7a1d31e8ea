#include "State/Rows/SearchQuery.h"

#include "State/ProjectOrder.h"

#include <QStringTokenizer>

#include <algorithm>

namespace {
/// A line as its search key, and which part of the line each QChar of the key comes from.
struct FoldedLine {
    QString key;
    QList<int> origin;   ///< of each QChar of the key, the number of its letter
    QList<int> letterAt; ///< where each letter begins in the line, and where the line ends

    explicit FoldedLine(const QString& line);
};

FoldedLine::FoldedLine(const QString& line) {
    for (int at = 0; at < line.size();) {
        const bool pair =
            line.at(at).isHighSurrogate() && at + 1 < line.size() && line.at(at + 1).isLowSurrogate();
        const int length = pair ? 2 : 1;
        const bool ascii = line.at(at).unicode() < 0x80; // most are, and need no tables
        const QString folded = ascii ? QString(line.at(at).toLower()) : searchKey(line.mid(at, length));
        if (!folded.isEmpty()) // a diacritic belongs to the letter before it
            letterAt.append(at);
        for (const QChar character : folded) {
            key.append(character);
            origin.append(static_cast<int>(letterAt.size()) - 1);
        }
        at += length;
    }
    letterAt.append(static_cast<int>(line.size()));
}

/// Where the letters of `word` have all followed one another in `key`; -1 where they do not.
qsizetype endOfLetters(QStringView word, QStringView key) {
    qsizetype at = 0;
    for (const QChar letter : word) {
        at = key.indexOf(letter, at);
        if (at++ < 0)
            return -1;
    }
    return at;
}

/// Marks each place of `word` in the folded line.
void markWord(const QString& word, const FoldedLine& line, QList<bool>& marked) {
    for (qsizetype at = line.key.indexOf(word); at >= 0; at = line.key.indexOf(word, at + word.size())) {
        for (qsizetype i = at; i < at + word.size(); ++i)
            marked[line.origin.at(i)] = true;
    }
}

/// Marks the letters of `word` in the folded line, as close together as they are before their first end.
void markLetters(const QString& word, const FoldedLine& line, QList<bool>& marked) {
    qsizetype at = endOfLetters(word, line.key);
    for (qsizetype letter = word.size() - 1; letter >= 0 && at > 0; --letter) {
        at = line.key.lastIndexOf(word.at(letter), at - 1);
        marked[line.origin.at(at)] = true;
    }
}
} // namespace

SearchQuery::SearchQuery(const QString& text)
    : m_words(searchKey(text).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {}

SearchQuery SearchQuery::forgiving() const {
    SearchQuery query = *this;
    query.m_forgiving = true;
    return query;
}

bool SearchQuery::matches(const QString& key) const {
    const auto isIn = [&](const QString& word) {
        if (!m_forgiving)
            return key.contains(word);
        for (const QStringView line : qTokenize(key, QLatin1Char('\n'))) {
            if (endOfLetters(word, line) >= 0)
                return true;
        }
        return false;
    };
    return std::all_of(m_words.begin(), m_words.end(), isIn);
}

QList<int> SearchQuery::hits(const QString& line) const {
    if (isEmpty())
        return {};
    const FoldedLine folded(line);
    QList<bool> marked(folded.letterAt.size(), false); // one more than letters, which ends the last hit
    for (const QString& word : m_words) {
        if (!m_forgiving || folded.key.contains(word))
            markWord(word, folded, marked);
        else
            markLetters(word, folded, marked);
    }
    QList<int> hits;
    for (qsizetype letter = 0; letter + 1 < marked.size(); ++letter) {
        if (!marked.at(letter))
            continue;
        const qsizetype first = letter;
        while (marked.at(letter))
            ++letter;
        hits.append({folded.letterAt.at(first), folded.letterAt.at(letter) - folded.letterAt.at(first)});
    }
    return hits;
}
