#include "Desktop/Native/NativeDesktop.h"

#include "System/Native/XcbReply.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QGuiApplication>
#include <QImage>
#include <QtGlobal>

#include <xcb/xcb.h>

#include <string_view>

namespace {
/// A tray that owns the X server's tray selection.
bool xTrayIsPresent() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11)
        return false;
    xcb_connection_t* const connection = x11->connection();
    constexpr std::string_view name("_NET_SYSTEM_TRAY_S0"); // Qt uses a single X screen
    const XcbReply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, name.size(), name.data()), nullptr));
    if (!atom)
        return false;
    const XcbReply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr));
    return owner && owner->owner != XCB_NONE;
}

/// A tray that gets its items over the session bus.
bool notifierHostIsPresent() {
    constexpr int timeout = 200; // milliseconds
    const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
    QDBusMessage question = QDBusMessage::createMethodCall(watcher, QStringLiteral("/StatusNotifierWatcher"),
                                                           QStringLiteral("org.freedesktop.DBus.Properties"),
                                                           QStringLiteral("Get"));
    question << watcher << QStringLiteral("IsStatusNotifierHostRegistered");
    const QDBusReply<QVariant> answer = QDBusConnection::sessionBus().call(question, QDBus::Block, timeout);
    return answer.isValid() && answer.value().toBool();
}
} // namespace

bool hasScreen() {
    const auto isSet = [](const char* variable) { return !qEnvironmentVariableIsEmpty(variable); };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

void becomeAccessory() {}

// Another process starts, and SingleInstance tells this one.
void onStartedAgain(std::function<void()> /*show*/) {}

bool trayIsPresent() {
    return xTrayIsPresent() || notifierHostIsPresent();
}

void activateApplication() {}

// The window manager does it.
void giveFocusBack() {}

void showInEverySpace(QWindow& /*window*/) {}

void keepVolumesClean() {}

QImage nativeSymbol(const QString& /*name*/, int /*pixels*/) {
    return {};
}
