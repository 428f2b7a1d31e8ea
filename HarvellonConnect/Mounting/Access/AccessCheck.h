#pragma once

#include "Mounting/Access/AccessLog.h"
#include "System/HostSystem.h"
#include "System/Shell.h"

#include <QCoroTask>
#include <QString>

#include <chrono>
#include <functional>

/// How long a check may take, and when its silence is told.
struct AccessLimits {
    std::chrono::milliseconds check{60'000};
    std::chrono::milliseconds silence{3000};
};

/// Goes the way of a mount as far as the server's files, once and without asking anybody: same options, a
/// connection of its own, but no key of a server is trusted by it. `login`: "user@server"; `domain`: as the
/// user knows the server. `silent` is called with the log so far whenever ssh has written nothing for
/// `limits.silence`, and `spoken` when it goes on. Never throws. Main thread; `shell` outlives this.
QCoro::Task<AccessFinding> checkAccess(HostSystem host, Shell& shell, QString login, QString domain,
                                       AccessLimits limits, std::function<void(const QString& log)> silent,
                                       std::function<void()> spoken);
