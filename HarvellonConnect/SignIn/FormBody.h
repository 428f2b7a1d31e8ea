#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <utility>

/// The body of a form post: values are percent-encoded, names are written as they are.
QByteArray formBody(const QList<std::pair<QString, QString>>& fields);
