#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

/// Takes what names somebody or something of the user's out of texts, and puts the same placeholder in the
/// place of the same value each time: "projekt-1", "mail-2".
///
/// Two kinds of values are found. Those that were added, in whatever form they come: upper case, composed or
/// decomposed, the two forms of an international domain, percent-encoded, escaped as in JSON. And what looks
/// like an address, a path, a server's name or a token, added or not. A value of fewer than four characters
/// is found as a word of its own only, because it would take every other word apart. One thread.
class Redaction {
  public:
    /// `home`: of the user; paths below it and below no folder of the system are the user's.
    explicit Redaction(const QString& home);

    /// `value` becomes "`kind`-1", or the next number. Empty values are ignored, and those that are known.
    void add(const QString& kind, const QString& value);
    /// `value` becomes `placeholder`.
    void addAs(const QString& placeholder, const QString& value);

    /// `text` with placeholders, in its canonical form: what was encoded is decoded, control characters other
    /// than line feeds are blanks.
    [[nodiscard]] QString redacted(const QString& text);

  private:
    struct Needle {
        QString folded;
        QString placeholder;
        bool wholeWord = false;
    };

    QString placeholderFor(const QString& kind, const QString& folded);
    void insert(const QString& folded, const QString& placeholder);
    void addLookAlikes(const QString& text);

    const QString m_home;
    QHash<QString, QString> m_placeholders;           ///< by folded value
    QHash<QString, int> m_numbers;                    ///< the last of each kind
    QHash<QChar, QHash<QChar, QList<Needle>>> m_tree; ///< by the first two characters, long ones first
};
