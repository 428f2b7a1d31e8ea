#pragma once

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QElapsedTimer>
#include <QObject>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <memory>

class QDBusError;
class QDBusMessage;

/// F19 where only the desktop itself may listen to the keyboard, as on Wayland: through its portal for global
/// shortcuts. The user may be asked first, and may choose another key. Only connecting waits, for the bus and
/// not for the portal. Main thread.
///
///   bind ─> Register ─ any answer ─> CreateSession ─ answer ─> BindShortcuts ─ answer ─> pressed, pressed, …
///     ^                                    └───────────────────────┴─ no portal, or a no ─> refused, the end
///     └─ the portal has started anew, or has closed a session that was bound for a while
///
/// The portal takes a program's name (Register) only before any other call on the same connection. Qt's own
/// theme makes such calls on the shared one, in some versions before Qt registers the program, so there is a
/// connection for the hot key alone.
class HotkeyPortal : public QObject {
    Q_OBJECT

  public:
    /// A session that the portal closes sooner after the key was bound counts as a refusal: binding it anew
    /// could go on without an end.
    explicit HotkeyPortal(std::chrono::milliseconds shortestSession = std::chrono::seconds(10));
    ~HotkeyPortal() override;
    Q_DISABLE_COPY_MOVE(HotkeyPortal)

    void bind();

  Q_SIGNALS:
    void pressed();
    void refused(const QString& reason); ///< a German sentence

  private Q_SLOTS:
    void sessionCreated(uint response, const QVariantMap& results);
    void shortcutsBound(uint response, const QVariantMap& results);
    void shortcutActivated(const QDBusObjectPath& session, const QString& shortcut);
    void sessionClosed();

  private:
    void followOwner(const QString& owner);
    void createSession();
    void refuse(const QString& reason);
    void call(const QDBusMessage& message, std::function<void(const QDBusError& error)> answered);
    void request(const QString& method, const QVariantList& arguments, QVariantMap options,
                 const char* answerSlot);

    const std::chrono::milliseconds m_shortestSession;
    const QString m_connectionName;
    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    std::unique_ptr<QObject> m_calls; ///< owns the calls under way; null while the portal is gone
    QString m_session;                ///< empty until the portal has granted one
    QElapsedTimer m_sinceBound;
};
