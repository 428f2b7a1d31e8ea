#pragma once

#include <QObject>
#include <QQuickView>
#include <QString>

#include <memory>

class AppState;
class QQmlEngine;
class StatusBarController;

/// Opens the settings; there is at most one window of them, which is kept after closing. Main thread.
class SettingsWindowManager : public QObject {
    Q_OBJECT

  public:
    /// `engine` and `statusBar` outlive the manager.
    SettingsWindowManager(QQmlEngine& engine, StatusBarController& statusBar, QString versionText,
                          QObject* parent = nullptr);
    ~SettingsWindowManager() override;

    /// Opens the window, or brings it to the front; the panel closes.
    void show(AppState& state);

    [[nodiscard]] QQuickView* window() const { return m_window.get(); }

  private:
    void makeWindow(AppState& state);

    QQmlEngine& m_engine;
    StatusBarController& m_statusBar;
    QString m_versionText;
    std::unique_ptr<QQuickView> m_window;
};
