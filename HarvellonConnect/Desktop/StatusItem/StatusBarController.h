#pragma once

#include "Desktop/Native/Notifications.h"
#include "Desktop/Panel/PanelController.h"

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

/// The item in the desktop's bar, and the panel that opens from it. Where the desktop has no bar for items
/// the panel is a window of its own; a bar that appears later is used from then on. Main thread.
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

    void toggle();
    void show();
    void close();
    [[nodiscard]] bool isShown() const;

    /// Opens the panel at the row of a project.
    void showProject(const QString& domain);
    /// Tells on the desktop that a mount ended by itself; a click on the message opens the panel at its row.
    void tellMountEnded(const QString& domain);
    /// Shows a short message of the program on the desktop.
    void tell(const QString& title, const QString& text);

    /// The window of the panel, made when it is first needed.
    [[nodiscard]] PanelWindow& panel();

  Q_SIGNALS:
    void settingsRequested();
    void updatesRequested();
    void quitRequested();

  private:
    void makeMenu();
    void activated(QSystemTrayIcon::ActivationReason reason);
    void choosePanelKind();
    void place();
    void stayInside();
    void showWithoutBar();
    void waitForBar();
    void makeStatusItem();
    [[nodiscard]] bool hasBar() const;

    QmlViews& m_views;
    QString m_versionText;
    AppState* m_state = nullptr;
    bool m_isInstalled = false;
    QMenu m_menu;
    std::unique_ptr<QSystemTrayIcon> m_statusItem; ///< none while a bar is waited for
    QElapsedTimer m_sinceInstall;
    Notifications m_notifications;
    QRect m_frame;                     ///< where the popover was asked to stand
    PanelController m_panelController; ///< the view in the panel uses it, so it ends after the panel
    std::unique_ptr<PanelWindow> m_panel;
};
