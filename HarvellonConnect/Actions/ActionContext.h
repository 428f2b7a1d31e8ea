#pragma once

#include "Directory/Project.h"
#include "System/HostSystem.h"

#include <QCoroTask>
#include <QString>

#include <functional>
#include <optional>

class QNetworkAccessManager;
class Reporter;
class Shell;
class VSCodeLauncher;

/// What the actions work with. Everything that is referred to outlives this. Main thread.
struct ActionContext {
    const HostSystem& host;
    Shell& shell;
    QNetworkAccessManager& network;
    Reporter& report;
    VSCodeLauncher& editor;
    /// Where a domain is mounted.
    std::function<std::optional<QString>(const QString& domain)> mountPoint;
    std::function<QCoro::Task<>(Project project)> connect;
    std::function<QCoro::Task<>(QString domain)> disconnect;
    /// Puts a text on the desktop's clipboard.
    std::function<void(const QString& text)> copyText;
};
