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

/// Older portals wrap the value of an answer twice.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

struct Setting {
    QString space;
    QString key;
};

/// Hears the portal's signal, whose value type only this desktop's sources know.
class SettingListener : public QObject {
    Q_OBJECT

  public:
    explicit SettingListener(Appearance* appearance) : QObject(appearance), m_appearance(*appearance) {}

  public Q_SLOTS:

    void changed(const QString& space, const QString& key, const QDBusVariant& value) {
        m_appearance.take(space, key, unwrapped(value.variant()));
    }

  private:
    Appearance& m_appearance;
};
} // namespace

void Appearance::followDesktop() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    bus.connect(service, path, settings, QStringLiteral("SettingChanged"), new SettingListener(this),
                SLOT(changed(QString, QString, QDBusVariant)));
    const Setting wanted[] = {
        {QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme")},
        {QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations")},
    };
    for (const Setting& setting : wanted) {
        QDBusMessage question =
            QDBusMessage::createMethodCall(service, path, settings, QStringLiteral("Read"));
        question << setting.space << setting.key;
        auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
        connect(answer, &QDBusPendingCallWatcher::finished, this, [this, setting, answer] {
            const QDBusPendingReply<QDBusVariant> reply = *answer;
            if (reply.isValid())
                take(setting.space, setting.key, unwrapped(reply.value().variant()));
            answer->deleteLater();
        });
    }
}

#include "Appearance_linux.moc"
