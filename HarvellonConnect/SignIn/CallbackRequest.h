#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

/// The query parameters of a raw HTTP request's first line. Bytes that are no such request give none; items
/// without a value are skipped, and a later duplicate wins.
QHash<QString, QString> queryOf(const QByteArray& request);
