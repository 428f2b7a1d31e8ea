#pragma once

#include "Desktop/Settings/SettingsController.h"

#include <QObject>
#include <QQuickView>
#include <QString>

#include <memory>

class AppState;
class QmlViews;
class StatusBarController;

/// Opens the settings window. There is one, which is kept after closing. Main thread.
class SettingsWindowManager : public QObject {
    Q_OBJECT

  public:
    /// `views` and `statusBar` outlive the manager.
    SettingsWindowManager(QmlViews& views, StatusBarController& statusBar, QString versionText,
                          QObject* parent = nullptr);
    ~SettingsWindowManager() override;

    /// Opens the window or brings it to the front, and closes the panel. `state` outlives the window.
    void show(AppState& state);

    /// Null before the first show().
    [[nodiscard]] QQuickView* window() const { return m_window.get(); }

  private:
    void makeWindow(AppState& state);

    QmlViews& m_views;
    StatusBarController& m_statusBar;
    QString m_versionText;
    SettingsController m_controller; ///< the view in the window uses it, so it ends after the window
    std::unique_ptr<QQuickView> m_window;
};
