#pragma once

#include "System/HostSystem.h"

/// Whether the program starts when the user signs in to the desktop. The desktop keeps it, not this program:
/// it can change at any time. Main thread.
class LoginItem {
  public:
    explicit LoginItem(const HostSystem& host) : m_autostartFile(host.autostartFile) {}

    [[nodiscard]] bool isEnabled() const;
    /// False when the desktop does not take the change.
    bool setEnabled(bool enabled);
    /// Whether it is switched on, but takes effect only when the user allows it in the system's settings.
    [[nodiscard]] bool waitsForApproval() const;

  private:
    QString m_autostartFile; ///< where the desktop knows no service for it
};
