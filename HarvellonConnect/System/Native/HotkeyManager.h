#pragma once

#include <QString>

#include <functional>
#include <memory>

/// The one global hot key, F19 without modifiers. Registering twice does nothing more. Main thread.
class HotkeyManager {
  public:
    HotkeyManager();
    ~HotkeyManager();
    Q_DISABLE_COPY_MOVE(HotkeyManager)

    /// Called on the main thread at every press.
    std::function<void()> onPress;
    /// Called on the main thread when the desktop refuses the key, with the reason as a German sentence.
    std::function<void(const QString&)> onRefused;

    void registerKey();
    void unregisterKey();

  private:
    struct Native;
    std::unique_ptr<Native> m_native; ///< nothing while no key is registered
};
