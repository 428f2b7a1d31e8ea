#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// The words that are sought in the list of projects, without regard to case, diacritics and their order.
class SearchQuery {
  public:
    SearchQuery() = default;

    explicit SearchQuery(const QString& text);

    [[nodiscard]] bool isEmpty() const { return m_words.isEmpty(); }

    /// The same words, but their letters need only follow one another: "bsp" finds "beispiel".
    [[nodiscard]] SearchQuery forgiving() const;

    /// Whether all words are in `key`, a text that searchKey() has made. Letters that follow one another do
    /// so within one line.
    [[nodiscard]] bool matches(const QString& key) const;

    /// Which parts of a shown line the words have found: start and length of each in turn, in QChars.
    /// Words that are in another line of the project mark nothing.
    [[nodiscard]] QList<int> hits(const QString& line) const;

  private:
    QStringList m_words; ///< as search keys
    bool m_forgiving = false;
};
