#pragma once

#include "Desktop/Guidance/AlertWindow.h"

#include <QObject>

#include <memory>

class AppState;
class QmlViews;

/// Shows the open guidance of AppState, and its help with an access, as alert windows until the user answers
/// or closes them. Main thread.
class GuidanceAlerts : public QObject {
    Q_OBJECT

  public:
    /// `views` and `state` outlive this object.
    GuidanceAlerts(QmlViews& views, AppState& state, QObject* parent = nullptr);
    ~GuidanceAlerts() override;

    /// Null while no guidance is open.
    [[nodiscard]] QQuickView* window() const { return m_window.get(); }

    /// Null while no help with an access is open.
    [[nodiscard]] QQuickView* accessWindow() const { return m_accessWindow.get(); }

  private:
    void update();
    void updateAccess();

    QmlViews& m_views;
    AppState& m_state;
    std::unique_ptr<AlertWindow> m_window;
    std::unique_ptr<AlertWindow> m_accessWindow;
};
