#pragma once

#include "Actions/ActionContext.h"
#include "Actions/Rules/DatabaseCredentials.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// The text of an option file for mysql that leads to the database behind `port` of this machine. Nothing
/// where a value holds a character that such a file cannot carry.
[[nodiscard]] std::optional<QByteArray> mysqlOptions(const DatabaseCredentials& credentials, quint16 port);

/// Opens `mysql` in a terminal. Its password is in a file for the user alone, which is removed before mysql
/// starts, or after a minute at the latest. Yields whether a terminal has been started; otherwise the user
/// has been told. Main thread.
bool openDatabaseShell(const ActionContext& context, const QString& mysql,
                       const DatabaseCredentials& credentials, quint16 port);
