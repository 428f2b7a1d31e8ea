#include "SignIn/CallbackRequest.h"

#include "System/Text.h"

#include <QStringList>
#include <QUrl>

QHash<QString, QString> queryOf(const QByteArray& request) {
    const QString text = strictUtf8(request).value_or(QString());
    const QStringList lines = text.split(QLatin1String("\r\n"), Qt::SkipEmptyParts);
    const QStringList words = lines.value(0).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.size() < 2)
        return {};
    // The query is split before it is decoded: an encoded "&" belongs to a value.
    const QString target = words.at(1).section(QLatin1Char('#'), 0, 0);
    const qsizetype start = target.indexOf(QLatin1Char('?'));
    if (start < 0)
        return {};
    QHash<QString, QString> parameters;
    const QStringList items = target.mid(start + 1).split(QLatin1Char('&'));
    for (const QString& item : items) {
        const qsizetype equals = item.indexOf(QLatin1Char('='));
        if (equals < 0)
            continue;
        const auto decoded = [](const QString& part) { return QUrl::fromPercentEncoding(part.toUtf8()); };
        parameters.insert(decoded(item.left(equals)), decoded(item.mid(equals + 1)));
    }
    return parameters;
}
