#pragma once

#include "Desktop/StatusItem/StatusSign.h"

#include <QObject>
#include <QTimer>

class AppState;
class QSystemTrayIcon;

/// Lets the status item show what the state tells, and touches it only when that changes. Main thread.
class StatusWatch : public QObject {
    Q_OBJECT

  public:
    /// Both outlive this.
    StatusWatch(AppState& state, QSystemTrayIcon& item);

  private:
    void update();
    [[nodiscard]] StatusFacts facts() const;

    AppState& m_state;
    QSystemTrayIcon& m_item;
    StatusSign m_sign;
    QTimer m_soon; ///< a connect that ends changes two things, one after the other
};
