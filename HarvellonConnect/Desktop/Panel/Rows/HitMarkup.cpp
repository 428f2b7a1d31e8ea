#include "Desktop/Panel/Rows/HitMarkup.h"

namespace {
/// Styled text would show one blank for several.
QString escaped(const QString& text) {
    return text.toHtmlEscaped().replace(QLatin1String("  "), QLatin1String(" &nbsp;"));
}
} // namespace

QString HitMarkup::marked(const QString& text, const QList<int>& hits, const QColor& ink) const {
    QString markup;
    qsizetype done = 0;
    for (qsizetype i = 0; i + 1 < hits.size(); i += 2) {
        markup += escaped(text.mid(done, hits.at(i) - done)) + QLatin1String("<b><font color=\"") +
                  ink.name() + QLatin1String("\">") + escaped(text.mid(hits.at(i), hits.at(i + 1))) +
                  QLatin1String("</font></b>");
        done = hits.at(i) + hits.at(i + 1);
    }
    return markup + escaped(text.mid(done));
}
