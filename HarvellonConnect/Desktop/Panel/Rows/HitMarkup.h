#pragma once

#include <QColor>
#include <QList>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

/// Shows in a text what a search has found in it.
class HitMarkup : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

  public:
    using QObject::QObject;

    /// `text` as styled text that looks as it is, whatever markup it holds, but with its hits bold and in
    /// `ink`. `hits`: start and length of each in turn, in order, as SearchQuery::hits. The "www." of a
    /// domain is in `faint`.
    Q_INVOKABLE [[nodiscard]] QString marked(const QString& text, const QList<int>& hits, const QColor& ink,
                                             const QColor& faint) const;
};
