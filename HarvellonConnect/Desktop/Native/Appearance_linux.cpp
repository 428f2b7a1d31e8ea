#include "Desktop/Native/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace {
const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");

/// Older portals wrap the value of a reply in two variants.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

struct Setting {
    QString group;
    QString key;
};

/// Receives the portal's signal. A class of its own, so that Appearance.h stays free of D-Bus types.
class SettingListener : public QObject {
    Q_OBJECT

  public:
    explicit SettingListener(Appearance* appearance) : QObject(appearance), m_appearance(*appearance) {}

  public Q_SLOTS:

    void changed(const QString& settingGroup, const QString& key, const QDBusVariant& value) {
        m_appearance.applySetting(settingGroup, key, unwrapped(value.variant()));
    }

  private:
    Appearance& m_appearance;
};
} // namespace

void Appearance::watchSettings() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(service, path, settings, QStringLiteral("SettingChanged"), new SettingListener(this),
                SLOT(changed(QString, QString, QDBusVariant)));
    const Setting wanted[] = {
        {QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme")},
        {QStringLiteral("org.freedesktop.appearance"), QStringLiteral("contrast")},
        {QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations")},
    };
    for (const Setting& setting : wanted) {
        QDBusMessage message =
            QDBusMessage::createMethodCall(service, path, settings, QStringLiteral("Read"));
        message << setting.group << setting.key;
        auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(message), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, setting, watcher] {
            const QDBusPendingReply<QDBusVariant> reply = *watcher;
            if (reply.isValid())
                applySetting(setting.group, setting.key, unwrapped(reply.value().variant()));
            watcher->deleteLater();
        });
    }
}

#include "Appearance_linux.moc"
