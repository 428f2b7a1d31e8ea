#pragma once

#include <QDBusObjectPath>
#include <QObject>
#include <QVariantMap>

class QDBusMessage;

/// F19 where only the desktop itself may listen to the keyboard, as on Wayland: through its portal for global
/// shortcuts. The user may be asked first, and may choose another key. Main thread.
///
///   bind ─> CreateSession ─ answer ─> BindShortcuts ─ answer ─> pressed, pressed, …
///                 └───────────────────────┴─ no portal, or a no ─> refused, the end
class HotkeyPortal : public QObject {
    Q_OBJECT

  public:
    HotkeyPortal() = default;
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

  private:
    void request(const QString& method, const QVariantList& arguments, QVariantMap options,
                 const char* answerSlot);

    QString m_session; ///< empty until the portal has granted one
};
