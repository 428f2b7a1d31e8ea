#pragma once

#include "Actions/ActionContext.h"
#include "Directory/ApplicationsResponse.h"

#include <QCoroTask>
#include <QKeySequence>
#include <QList>
#include <QRgb>
#include <QString>

#include <optional>

/// What can be done with a project.
enum class HoverTarget {
    disconnect,
    connect,
    vscode,
    finder,
    ssh,
    cache,
    safari,
    database,
    pin,
    unpin,
    copyAddress,
    copyFolder,
    copyShellCommand
};

/// The groups of a row's context menu, from top to bottom, parted by lines.
enum class MenuGroup { none, copy, pin };

/// What decides which actions a project's row offers.
struct RowFacts {
    bool coder = false;        ///< works on servers
    bool databaseUser = false; ///< may open databases, too
    bool connected = false;    ///< the project is mounted
    bool kept = false;     ///< the user's list does not hold the project, but it is mounted or was until now
    bool lost = false;     ///< the mount has ended by itself
    bool pinnable = false; ///< there is an account that can pin it
    bool pinned = false;

    static RowFacts of(const std::optional<UserProfile>& user, bool connected);
};

/// The colour of an action's icon.
struct Tint {
    QRgb light = 0;
    QRgb dark = 0;
};

/// The place of an action's button: columns are counted from the left, and each group stands a little apart
/// from the one before.
struct Slot {
    int column = 0;
    int group = 0;
};

/// One thing that can be done with a project: how it looks, who may do it, and what it does. A new action is
/// one entry of the table in ProjectActions.cpp and one function.
struct ProjectAction {
    using Function = QCoro::Task<> (*)(ActionContext& context, Project project, bool alternative);

    HoverTarget target = HoverTarget::connect;
    QString symbol{}; ///< name of its icon
    QString help{};
    QString
        helpWhenLost{}; ///< instead of `help` where the mount has ended by itself; empty for no difference
    QKeySequence shortcut{};
    Tint tint{};
    std::optional<Slot> slot{};            ///< nothing: has no button among the others of the row
    std::optional<Slot> slotWhenLost{};    ///< instead of `slot`, as helpWhenLost
    MenuGroup menuGroup = MenuGroup::none; ///< where it stands in the row's context menu
    bool (*offered)(const RowFacts& facts) = nullptr;
    Function function = nullptr;
    bool dangerous = false;            ///< the icon turns red under the pointer
    bool restsWhileConnecting = false; ///< shown, but out of use while a mount is under way
    bool hasAlternative = false;       ///< Shift makes it do something else
    bool usesProject = true;           ///< counts as the project's latest use

    [[nodiscard]] int targetNumber() const { return static_cast<int>(target); }

    /// In points from the left end of the buttons, of an action that has a slot.
    [[nodiscard]] int slotPosition(bool lost = false) const;
};

/// The one table of what can be done with a project, and the one way to do it. Main thread.
class ProjectActions {
  public:
    static constexpr int buttonColumnWidth = 30; ///< the width of an icon button, in points

    /// `context` outlives this.
    explicit ProjectActions(ActionContext& context) : m_context(context) {}

    [[nodiscard]] static const QList<ProjectAction>& table();
    [[nodiscard]] static const ProjectAction& action(HoverTarget target);
    /// The width of all buttons of a row, in points.
    [[nodiscard]] static int railWidth();
    /// The actions that a row offers, as a set of bits: 1 << target.
    [[nodiscard]] static int offers(const RowFacts& facts);

    /// Runs the action, or with `alternative` its Shift variant. Never fails: outcomes are logged as the
    /// action's function says.
    QCoro::Task<> perform(HoverTarget target, Project project, bool alternative);

  private:
    ActionContext& m_context;
};

/// Keys as they are printed on a German keyboard, or in the desktop's own signs.
[[nodiscard]] QString keyText(const QKeySequence& keys);
