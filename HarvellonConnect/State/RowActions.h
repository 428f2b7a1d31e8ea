#pragma once

#include "Directory/ApplicationsResponse.h"

#include <QObject>
#include <QtQmlIntegration>

#include <optional>

/// Which buttons a project's row offers.
struct RowActions {
    Q_GADGET
    QML_ANONYMOUS
    Q_PROPERTY(bool connect MEMBER connect)
    Q_PROPERTY(bool disconnect MEMBER disconnect)
    Q_PROPERTY(bool vscode MEMBER vscode)
    Q_PROPERTY(bool finder MEMBER finder)
    Q_PROPERTY(bool ssh MEMBER ssh)
    Q_PROPERTY(bool database MEMBER database)
    Q_PROPERTY(bool cache MEMBER cache)
    Q_PROPERTY(bool safari MEMBER safari)

  public:
    bool connect = false;
    bool disconnect = false;
    bool vscode = false;
    bool finder = false;
    bool ssh = false;
    bool database = false;
    bool cache = true;
    bool safari = true;

    bool operator==(const RowActions&) const = default;

    /// Coders work on the server; everyone may look at the site and clear its cache.
    static RowActions of(const std::optional<UserProfile>& user, bool connected) {
        RowActions actions;
        const bool coder = user && user->coder.value_or(false);
        actions.connect = coder && !connected;
        actions.disconnect = actions.vscode = actions.finder = coder && connected;
        actions.ssh = coder;
        actions.database = coder && user->allowDatabaseConnect.value_or(false);
        return actions;
    }
};
