#pragma once

#include <QCoroTask>
#include <QString>

#include <chrono>

/// Waits until `path` is a folder whose contents can be listed: two probes a second, for `budget`. The probes
/// run on a worker thread; one that gets no answer ends the wait when the budget is over.
QCoro::Task<bool> waitForDirectory(QString path, std::chrono::seconds budget);
