#include "Desktop/Panel/Rows/HitMarkup.h"

#include <algorithm>

namespace {
/// Styled text would show one blank for several.
QString escaped(const QString& text) {
    return text.toHtmlEscaped().replace(QLatin1String("  "), QLatin1String(" &nbsp;"));
}

QString inColor(const QString& text, const QColor& color) {
    return QLatin1String("<font color=\"") + color.name() + QLatin1String("\">") + escaped(text) +
           QLatin1String("</font>");
}

/// The length of a "www." that a domain is known without.
qsizetype prefixLength(const QString& domain) {
    const QLatin1String prefix("www.");
    const bool known =
        domain.startsWith(prefix, Qt::CaseInsensitive) && domain.indexOf(u'.', prefix.size()) > 0;
    return known ? prefix.size() : 0;
}
} // namespace

QString HitMarkup::marked(const QString& text, const QList<int>& hits, const QColor& ink,
                          const QColor& faint) const {
    const qsizetype prefix = prefixLength(text);
    const auto unmarked = [&](qsizetype from, qsizetype end) {
        const qsizetype middle = std::clamp(prefix, from, end);
        return (middle > from ? inColor(text.mid(from, middle - from), faint) : QString()) +
               escaped(text.mid(middle, end - middle));
    };
    QString markup;
    qsizetype done = 0;
    for (qsizetype i = 0; i + 1 < hits.size(); i += 2) {
        markup += unmarked(done, hits.at(i)) + QLatin1String("<b>") +
                  inColor(text.mid(hits.at(i), hits.at(i + 1)), ink) + QLatin1String("</b>");
        done = hits.at(i) + hits.at(i + 1);
    }
    return markup + unmarked(done, text.size());
}
