#pragma once

#include <QCoroTask>
#include <QFuture>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

/// Asks the file system of a mounted domain on a worker thread, one question after the other. Nothing when
/// the domain is not mounted.
using AskMount =
    std::function<std::optional<QFuture<bool>>(const QString& domain, const std::function<bool()>& question)>;

/// Waits until `path`, in the tree of `domain`, is a folder whose contents can be listed: two probes a
/// second, for `budget`. A probe that gets no answer ends the wait when the budget is over, and so does the
/// end of the mount.
QCoro::Task<bool> waitForDirectory(AskMount ask, QString domain, QString path, std::chrono::seconds budget);

/// Whether `path` is a symbolic link that cannot be followed on this machine. False without an answer in
/// `limit`.
QCoro::Task<bool> isBrokenLink(AskMount ask, QString domain, QString path, std::chrono::milliseconds limit);
