#include "Desktop/StatusItem/StatusBarController.h"

#include "Desktop/Native/NativeDesktop.h"
#include "Desktop/Panel/PanelWindow.h"
#include "Desktop/QmlViews.h"
#include "Desktop/Screens.h"
#include "Desktop/StatusItem/PopoverPlacement.h"
#include "State/AppState.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <QTimer>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace {
/// Lets the icon appear first; the panel is still rendered before a user can click the icon.
constexpr auto preRenderDelay = 300ms;
/// At login the tray may start a little after this program.
constexpr auto trayGracePeriod = 1s;
constexpr auto trayPollInterval = 250ms;
constexpr std::chrono::milliseconds trayWaitLimit = 5s;

QIcon statusIcon() {
    QIcon icon;
    for (const int size : {16, 18, 20, 22, 24, 32, 36, 44, 48, 64})
        icon.addFile(QStringLiteral(":/icons/StatusIcon-%1.png").arg(size), QSize(size, size));
    icon.setIsMask(true);
    return icon;
}
} // namespace

bool isForPanel(QSystemTrayIcon::ActivationReason reason, bool itemHasMenu) {
    return !itemHasMenu || reason == QSystemTrayIcon::Trigger;
}

StatusBarController::StatusBarController(QmlViews& views, QString versionText, QObject* parent)
    : QObject(parent), m_views(views), m_versionText(std::move(versionText)) {
    connect(&m_notifications, &Notifications::clicked, this, [this](const QString& domain) {
        if (domain.isEmpty())
            show();
        else
            showProject(domain);
    });
    connect(&m_panelController, &PanelController::closeRequested, this, &StatusBarController::dismiss);
    connect(&m_panelController, &PanelController::settingsRequested, this,
            &StatusBarController::settingsRequested);
    connect(&m_panelController, &PanelController::updatesRequested, this,
            &StatusBarController::updatesRequested);
    connect(&m_panelController, &PanelController::quitRequested, this, &StatusBarController::quitRequested);
}

StatusBarController::~StatusBarController() = default;

void StatusBarController::install(AppState& state) {
    if (m_isInstalled)
        return;
    m_state = &state;
    connect(&m_notifications, &Notifications::refused, state.refusals(),
            [&state](const QString& untold) { state.refusals()->refuse(Permission::notifications, untold); });
    connect(&m_notifications, &Notifications::allowed, state.refusals(),
            [&state] { state.refusals()->allow(Permission::notifications); });
    makeMenu();
    m_isInstalled = true;
    m_sinceInstall.start();
    waitForTray();
    QTimer::singleShot(preRenderDelay, this, [this] { panel().preRender(); });
    QTimer::singleShot(trayGracePeriod, this, &StatusBarController::showWithoutTray);
    // The system's own handler, which this one replaces, is there when the event loop runs.
    QTimer::singleShot(0, this, [this] {
        onStartedAgain([guard = QPointer<StatusBarController>(this)] {
            if (guard)
                guard->show();
        });
    });
}

/// QSystemTrayIcon looks for a tray once and caches the result, so wait for one before the first icon.
void StatusBarController::waitForTray() {
    if (trayIsPresent() || m_sinceInstall.hasExpired(trayWaitLimit.count()))
        makeStatusItem();
    else
        QTimer::singleShot(trayPollInterval, this, &StatusBarController::waitForTray);
}

void StatusBarController::makeStatusItem() {
    m_statusItem = std::make_unique<QSystemTrayIcon>();
    connect(m_statusItem.get(), &QSystemTrayIcon::activated, this, &StatusBarController::activated);
    m_notifications.setItem(*m_statusItem);
    m_statusItem->setIcon(statusIcon());
    m_statusItem->setToolTip(QStringLiteral("Harvellon Connect"));
    if (m_state->host().statusItemHasMenu)
        m_statusItem->setContextMenu(&m_menu);
    m_statusItem->show();
}

bool StatusBarController::hasTray() const {
    return m_statusItem && QSystemTrayIcon::isSystemTrayAvailable();
}

void StatusBarController::showWithoutTray() {
    if (!hasTray() && !m_hasBeenShown) // a panel that the user has closed stays closed
        show();
}

void StatusBarController::makeMenu() {
    m_menu.addAction(QStringLiteral("Harvellon Connect öffnen"), this, &StatusBarController::show);
    m_menu.addSeparator();
    m_menu.addAction(QStringLiteral("Einstellungen"), this, &StatusBarController::settingsRequested);
    m_menu.addAction(QStringLiteral("Auf Updates prüfen"), this, &StatusBarController::updatesRequested);
    m_menu.addSeparator();
    m_menu.addAction(QStringLiteral("Beenden"), this, &StatusBarController::quitRequested);
}

PanelWindow& StatusBarController::panel() {
    if (m_panel)
        return *m_panel;
    m_panel = std::make_unique<PanelWindow>(&m_views.engine());
    m_panel->setInitialProperties({{QStringLiteral("controller"), QVariant::fromValue(&m_panelController)},
                                   {QStringLiteral("state"), QVariant::fromValue(m_state)},
                                   {QStringLiteral("versionText"), m_versionText}});
    m_panel->setSource(QmlViews::address(QStringLiteral("ContentView")));
    choosePanelKind();
    return *m_panel;
}

void StatusBarController::choosePanelKind() {
    m_panel->setKind(panelKind(hasTray(), QGuiApplication::platformName()));
    m_panelController.setRounded(m_panel->kind() == PanelWindow::Kind::popover);
}

bool StatusBarController::isShown() const {
    return m_panel && m_panel->isVisible();
}

void StatusBarController::toggle() {
    if (isShown())
        dismiss();
    else if (!m_panel || !m_panel->closedJustNow())
        show();
}

void StatusBarController::show() {
    m_hasBeenShown = true;
    PanelWindow& window = panel();
    if (!window.isVisible()) {
        choosePanelKind();
        place();
        Q_EMIT m_panelController.opened();
    }
    showInEverySpace(window);
    activateApplication();
    window.show();
    window.raise();
    window.requestActivate();
    QTimer::singleShot(0, this, &StatusBarController::keepOnScreen);
}

void StatusBarController::close() {
    if (m_panel)
        m_panel->hide();
}

/// The user is done: what was active before goes on, unless another window of ours is open.
void StatusBarController::dismiss() {
    close();
    const QWindowList windows = QGuiApplication::topLevelWindows();
    if (std::none_of(windows.begin(), windows.end(),
                     [](const QWindow* window) { return window->isVisible(); }))
        giveFocusBack();
}

void StatusBarController::place() {
    if (m_panel->kind() == PanelWindow::Kind::window) {
        const QRect room = screenUnderPointer()->availableGeometry();
        m_panel->fitInto(room.height());
        m_panel->setPosition(room.center() - QRect(QPoint(0, 0), m_panel->size()).center());
        return;
    }
    const QRect item = m_statusItem->geometry();
    const bool geometryKnown = item.width() > 0 && item.height() > 0;
    const QPoint anchor = geometryKnown ? item.center() : QCursor::pos();
    const QScreen* const screen = screenAt(anchor);
    const QRect visible = wholePoints(screen->availableGeometry(), screen->devicePixelRatio());
    m_panel->fitInto(visible.height());
    const QSize size = m_panel->size();
    m_requestedFrame = geometryKnown ? besideItem(size, item, visible)
                                     : besideBar(size, screen->geometry(), visible, anchor);
    m_panel->setPosition(m_requestedFrame.topLeft());
}

/// Uses the requested frame: until the window manager has placed the window, the window reports the screen's
/// corner as its position.
void StatusBarController::keepOnScreen() {
    if (!isShown() || m_panel->kind() != PanelWindow::Kind::popover)
        return;
    const QRect inside =
        keepInside(m_requestedFrame, screenAt(m_requestedFrame.center())->availableGeometry());
    if (inside == m_requestedFrame)
        return;
    m_requestedFrame = inside;
    m_panel->setPosition(inside.topLeft());
}

void StatusBarController::activated(QSystemTrayIcon::ActivationReason reason) {
    if (isForPanel(reason, m_state->host().statusItemHasMenu))
        toggle();
}

void StatusBarController::showProject(const QString& domain) {
    show();
    Q_EMIT m_panelController.projectChosen(domain);
}

void StatusBarController::notifyMountsEnded(const QStringList& domains) {
    if (domains.size() > 1) {
        m_notifications.show(QStringLiteral("%1 Verbindungen unerwartet beendet").arg(domains.size()),
                             domains.join(QLatin1Char('\n')), domains.first());
        return;
    }
    const QString domain = domains.value(0);
    const std::optional<Project> project = m_state->visibleProjects()->project(domain);
    m_notifications.show(project ? project->title() : domain,
                         QStringLiteral("Die Verbindung zu %1 wurde unerwartet beendet.").arg(domain),
                         domain);
}

void StatusBarController::notify(const QString& title, const QString& text) {
    m_notifications.show(title, text);
}
