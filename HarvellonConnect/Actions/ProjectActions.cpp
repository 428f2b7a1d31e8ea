#include "Actions/ProjectActions.h"

#include "Actions/ClearCache.h"
#include "Actions/OpenDatabase.h"
#include "Actions/OpenFolder.h"
#include "Actions/OpenSite.h"

#include <algorithm>

namespace {
constexpr int columnGap = 4; // points
constexpr int groupGap = 6;
const QKeySequence pinKey(Qt::CTRL | Qt::Key_P);

constexpr Tint tintConnect{0xff0b5e1e, 0xffb6e0a6};
constexpr Tint tintDisconnect{0xff847c74, 0xffb0aaa2};
constexpr Tint tintVSCode{0xff0a5fc2, 0xff4a90fc};
constexpr Tint tintFinder{0xffa07800, 0xffefc350};
constexpr Tint tintSSH{0xff24211c, 0xfff6f1ec};
constexpr Tint tintDB{0xff5f0a70, 0xffb47fb0};
constexpr Tint tintCache{0xffc3284f, 0xfff4606c};
constexpr Tint tintSafari{0xff1787a0, 0xff5ad6ee};

bool always(const RowFacts& /*facts*/) {
    return true;
}

/// Whoever has mounted a project may go on with it, whoever is signed in now.
bool toCoders(const RowFacts& facts) {
    return facts.coder || facts.kept;
}

bool toDatabaseUsers(const RowFacts& facts) {
    return facts.coder && facts.databaseUser;
}

bool beforeConnecting(const RowFacts& facts) {
    return toCoders(facts) && !facts.connected;
}

bool whileConnected(const RowFacts& facts) {
    return toCoders(facts) && facts.connected;
}

bool toBePinned(const RowFacts& facts) {
    return facts.pinnable && !facts.pinned;
}

bool toBeUnpinned(const RowFacts& facts) {
    return facts.pinnable && facts.pinned;
}

bool toBeEnded(const RowFacts& facts) {
    return toCoders(facts) && (facts.connected || facts.lost);
}

QCoro::Task<> connectProject(ActionContext& context, Project project, bool /*alternative*/) {
    return context.connect(project);
}

QCoro::Task<> disconnectProject(ActionContext& context, Project project, bool /*alternative*/) {
    return context.disconnect(project.domain);
}

QCoro::Task<> pinProject(ActionContext& context, Project project, bool /*alternative*/) {
    context.setPinned(project.domain, true);
    co_return;
}

QCoro::Task<> unpinProject(ActionContext& context, Project project, bool /*alternative*/) {
    context.setPinned(project.domain, false);
    co_return;
}

QString text(const char* utf8) {
    return QString::fromUtf8(utf8);
}

/// From left to right, as the buttons of a row stand, then what has none among them.
QList<ProjectAction> makeTable() {
    return {
        {.target = HoverTarget::connect,
         .symbol = text("bolt.horizontal.circle"),
         .help = text("Verbinden und mounten"),
         .helpWhenLost = text("Neu verbinden"),
         .shortcut = QKeySequence(Qt::Key_Return),
         .tint = tintConnect,
         .slot = Slot{.column = 0, .group = 0},
         .offered = beforeConnecting,
         .function = connectProject,
         .restsWhileConnecting = true},
        {.target = HoverTarget::disconnect,
         .symbol = text("xmark.circle"),
         .help = text("Trennen"),
         .helpWhenLost = text("Nicht wieder verbinden"),
         .shortcut = QKeySequence(Qt::CTRL | Qt::Key_T),
         .tint = tintDisconnect,
         .slot = Slot{.column = 0, .group = 0},
         .slotWhenLost = Slot{.column = 1, .group = 1},
         .offered = toBeEnded,
         .function = disconnectProject,
         .dangerous = true,
         .usesProject = false},
        {.target = HoverTarget::vscode,
         .symbol = text("chevron.left.slash.chevron.right"),
         .help = text("In VS Code oeffnen"),
         .shortcut = QKeySequence(Qt::Key_Return),
         .tint = tintVSCode,
         .slot = Slot{.column = 1, .group = 1},
         .offered = whileConnected,
         .function = openInVSCode},
        {.target = HoverTarget::finder,
         .symbol = text("folder"),
         .help = text("Im Finder oeffnen"),
         .shortcut = QKeySequence(Qt::CTRL | Qt::Key_O),
         .tint = tintFinder,
         .slot = Slot{.column = 2, .group = 1},
         .offered = whileConnected,
         .function = openInFinder},
        {.target = HoverTarget::ssh,
         .symbol = text("terminal"),
         .help = text("SSH-Shell"),
         .shortcut = QKeySequence(Qt::CTRL | Qt::Key_S),
         .tint = tintSSH,
         .slot = Slot{.column = 3, .group = 2},
         .offered = toCoders,
         .function = openShell},
        {.target = HoverTarget::database,
         .symbol = text("cylinder.split.1x2"),
         .help = text("Datenbank in Sequel Ace oeffnen"),
         .shortcut = QKeySequence(Qt::CTRL | Qt::Key_D),
         .tint = tintDB,
         .slot = Slot{.column = 4, .group = 2},
         .offered = toDatabaseUsers,
         .function = openDatabase},
        {.target = HoverTarget::cache,
         .symbol = text("bolt.circle"),
         .help = text("Cache leeren"),
         .shortcut = QKeySequence(Qt::CTRL | Qt::Key_L),
         .tint = tintCache,
         .slot = Slot{.column = 5, .group = 2},
         .offered = always,
         .function = clearCache,
         .usesProject = false},
        {.target = HoverTarget::safari,
         .symbol = text("safari"),
         .help = text("Seite oeffnen (Shift: /admin)"),
         .shortcut = QKeySequence(Qt::CTRL | Qt::Key_Return),
         .tint = tintSafari,
         .slot = Slot{.column = 6, .group = 2},
         .offered = always,
         .function = openSite,
         .hasAlternative = true},
        {.target = HoverTarget::pin,
         .symbol = text("pin"),
         .help = text("Oben anheften"),
         .shortcut = pinKey,
         .menuGroup = MenuGroup::pin,
         .offered = toBePinned,
         .function = pinProject,
         .usesProject = false},
        {.target = HoverTarget::unpin,
         .symbol = text("pin.fill"),
         .help = text("Nicht mehr anheften"),
         .shortcut = pinKey,
         .menuGroup = MenuGroup::pin,
         .offered = toBeUnpinned,
         .function = unpinProject,
         .usesProject = false},
        {.target = HoverTarget::copyAddress,
         .help = text("Adresse kopieren"),
         .menuGroup = MenuGroup::copy,
         .offered = always,
         .function = copySiteAddress,
         .usesProject = false},
        {.target = HoverTarget::copyFolder,
         .help = text("Ordner kopieren"),
         .menuGroup = MenuGroup::copy,
         .offered = whileConnected,
         .function = copyFolder,
         .usesProject = false},
        {.target = HoverTarget::copyShellCommand,
         .help = text("ssh-Befehl kopieren"),
         .menuGroup = MenuGroup::copy,
         .offered = toCoders,
         .function = copyShellCommand,
         .usesProject = false},
    };
}
} // namespace

QString keyText(const QKeySequence& keys) {
    QString shown = keys.toString(QKeySequence::NativeText);
    shown.replace(QStringLiteral("Ctrl"), QStringLiteral("Strg"));
    shown.replace(QStringLiteral("Shift"), QStringLiteral("Umschalt"));
    shown.replace(QStringLiteral("Return"), QStringLiteral("Eingabe"));
    return shown;
}

RowFacts RowFacts::of(const std::optional<UserProfile>& user, bool connected) {
    return {.coder = user && user->coder.value_or(false),
            .databaseUser = user && user->allowDatabaseConnect.value_or(false),
            .connected = connected};
}

int ProjectAction::slotPosition(bool lost) const {
    const Slot usual = slot.value_or(Slot());
    const Slot place = lost ? slotWhenLost.value_or(usual) : usual;
    return place.column * (ProjectActions::buttonColumnWidth + columnGap) + place.group * groupGap;
}

const QList<ProjectAction>& ProjectActions::table() {
    static const QList<ProjectAction> actions = makeTable();
    return actions;
}

const ProjectAction& ProjectActions::action(HoverTarget target) {
    const auto found = std::find_if(table().begin(), table().end(), [target](const ProjectAction& action) {
        return action.target == target;
    });
    Q_ASSERT(found != table().end());
    return *found;
}

int ProjectActions::railWidth() {
    int right = 0;
    for (const ProjectAction& action : table()) {
        if (action.slot)
            right = std::max(right, action.slotPosition() + buttonColumnWidth);
    }
    return right;
}

int ProjectActions::offers(const RowFacts& facts) {
    int targets = 0;
    for (const ProjectAction& action : table()) {
        if (action.offered(facts))
            targets |= 1 << action.targetNumber();
    }
    return targets;
}

QCoro::Task<> ProjectActions::perform(HoverTarget target, Project project, bool alternative) {
    return action(target).function(m_context, project, alternative);
}
