#pragma once

#include "Actions/DirectoryWait.h"
#include "Directory/Project.h"
#include "System/HostSystem.h"

#include <QCoroTask>
#include <QString>

#include <functional>
#include <optional>

class DatabaseTunnels;
class QNetworkAccessManager;
class Reporter;
class SharedConnections;
class Shell;
class VSCodeLauncher;
struct ProgramChoices;

/// What the actions work with. Everything that is referred to outlives this. Main thread.
struct ActionContext {
    const HostSystem& host;
    Shell& shell;
    QNetworkAccessManager& network;
    Reporter& report;
    VSCodeLauncher& editor;
    SharedConnections& shared;
    const ProgramChoices& programs;
    DatabaseTunnels& tunnels;
    /// Where a domain is mounted.
    std::function<std::optional<QString>(const QString& domain)> mountPoint;
    AskMount ask;
    /// Has the names of a mount read in advance, where sshfs has forgotten them.
    std::function<void(const QString& domain)> warmUp;
    /// The project's document folder is a link that its mount cannot follow.
    std::function<void(const Project& project)> offerLinks;
    std::function<QCoro::Task<>(Project project)> connect;
    std::function<QCoro::Task<>(QString domain)> disconnect;
    /// Puts a text on the desktop's clipboard.
    std::function<void(const QString& text)> copyText;
    /// Pins the project for the active account, or pins it no more.
    std::function<void(const QString& domain, bool pinned)> setPinned{};
};
