#pragma once

#include "Desktop/Native/Notifications.h"
#include "Desktop/Panel/PanelController.h"
#include "Desktop/StatusItem/StatusWatch.h"

#include <QElapsedTimer>
#include <QMenu>
#include <QObject>
#include <QRect>
#include <QString>
#include <QSystemTrayIcon>

#include <memory>

class AppState;
class PanelWindow;
class QmlViews;

/// The status item in the menu bar or tray, and the panel that opens from it. If the desktop has no tray, the
/// panel is an ordinary window; a tray that appears later is used from then on. Main thread.
class StatusBarController : public QObject {
    Q_OBJECT

  public:
    /// `views` outlives the controller.
    StatusBarController(QmlViews& views, QString versionText, QObject* parent = nullptr);
    ~StatusBarController() override;

    /// Adds the status item and shows the panel when there is no tray. Later calls do nothing. `state`
    /// outlives the controller.
    void install(AppState& state);

    [[nodiscard]] bool isInstalled() const { return m_isInstalled; }

    /// Shows the panel if it is hidden, hides it if it is shown.
    void toggle();
    void show(); ///< opens the panel, or brings it to the front
    void close();
    [[nodiscard]] bool isShown() const;

    /// Opens the panel with the row of a project selected.
    void showProject(const QString& domain);
    /// Shows one notification that mounts ended unexpectedly; a click on it opens the panel at the first
    /// one's row.
    void notifyMountsEnded(const QStringList& domains);
    /// Shows a notification; a click on it opens the panel.
    void notify(const QString& title, const QString& text);

    /// Finds out whether the desktop shows notifications of this program; the state's refusals tell.
    void lookAtNotifications() { m_notifications.look(); }

    /// The panel's window, created at the first call. Call install() before.
    [[nodiscard]] PanelWindow& panel();

  Q_SIGNALS:
    void settingsRequested();
    void updatesRequested();
    void quitRequested();

  private:
    void makeMenu();
    void dismiss();
    void leave();
    void activated(QSystemTrayIcon::ActivationReason reason);
    void choosePanelKind();
    void place();
    void keepOnScreen();
    void showWithoutTray();
    void waitForTray();
    void makeStatusItem();
    [[nodiscard]] bool hasTray() const;

    QmlViews& m_views;
    QString m_versionText;
    AppState* m_state = nullptr;
    bool m_isInstalled = false;
    bool m_hasBeenShown = false; ///< the panel has
    QMenu m_menu;
    std::unique_ptr<QSystemTrayIcon> m_statusItem; ///< null while waiting for a tray
    std::unique_ptr<StatusWatch> m_statusWatch;
    QElapsedTimer m_sinceInstall;
    Notifications m_notifications;
    QRect m_requestedFrame;            ///< of the popover
    PanelController m_panelController; ///< the view in the panel uses it, so it ends after the panel
    std::unique_ptr<PanelWindow> m_panel;
};

/// Whether a click on the status item opens or closes the panel. Without a menu every click does: macOS
/// reports the second of two quick clicks as a double click, and one of the right button as one for the menu.
[[nodiscard]] bool isForPanel(QSystemTrayIcon::ActivationReason reason, bool itemHasMenu);
