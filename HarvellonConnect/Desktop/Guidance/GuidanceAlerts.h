#pragma once

#include <QObject>
#include <QQuickView>

#include <memory>

class AppState;
class QmlViews;

/// Shows the open guidance of AppState as an alert window until the user answers it. Main thread.
class GuidanceAlerts : public QObject {
    Q_OBJECT

  public:
    /// `views` and `state` outlive this object.
    GuidanceAlerts(QmlViews& views, AppState& state, QObject* parent = nullptr);
    ~GuidanceAlerts() override;

    /// Null while no alert is open.
    [[nodiscard]] QQuickView* window() const { return m_window.get(); }

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void update();
    void open(const QVariantMap& guidance);

    QmlViews& m_views;
    AppState& m_state;
    std::unique_ptr<QQuickView> m_window;
};
