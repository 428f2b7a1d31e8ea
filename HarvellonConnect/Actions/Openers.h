#pragma once

#include "Actions/ActionContext.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

// What hands something to the user's own programs. Main thread; `context` outlives the calls.

/// Hands an address or a folder to the program that opens it. Never fails: where nothing opens, the user sees
/// that.
void openAddress(const ActionContext& context, const QString& address);

/// Hands an address that holds a password to the program for its scheme, and to nothing else. Never fails.
void openSecretAddress(const ActionContext& context, const QString& address);

/// Whether a program of the desktop opens addresses of `scheme`.
QCoro::Task<bool> opensAddresses(const ActionContext& context, QString scheme);

/// Opens a terminal window, empty or with `command` in it, and yields whether one was started. Where there is
/// no terminal, the user is told.
bool openTerminal(const ActionContext& context, const QStringList& command = {});
