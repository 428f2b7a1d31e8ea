#pragma once

#include <QByteArray>

/// The whole HTTP answer that ends a login in the browser. `icon`: the application's icon as PNG, may be
/// empty.
QByteArray successAnswer(const QByteArray& icon);
