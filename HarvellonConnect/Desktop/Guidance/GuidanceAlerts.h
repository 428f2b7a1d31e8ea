#pragma once

#include <QObject>
#include <QQuickView>

#include <memory>

class AppState;
class QmlViews;

/// Shows the state's guidance in a window of its own for as long as it waits for an answer. Main thread.
class GuidanceAlerts : public QObject {
    Q_OBJECT

  public:
    /// Both outlive the alerts.
    GuidanceAlerts(QmlViews& views, AppState& state, QObject* parent = nullptr);
    ~GuidanceAlerts() override;

    [[nodiscard]] QQuickView* window() const { return m_window.get(); }

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void update();
    void open(const QVariantMap& guidance);

    QmlViews& m_views;
    AppState& m_state;
    std::unique_ptr<QQuickView> m_window;
};
