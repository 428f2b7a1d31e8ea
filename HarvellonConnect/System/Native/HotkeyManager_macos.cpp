#include "System/Native/HotkeyManager.h"

#include <QCoreApplication>
#include <QMetaObject>

// Defines Point, Style and more in the global namespace, so it stays in this file.
#include <Carbon/Carbon.h>

namespace {
constexpr UInt32 noModifiers = 0;
constexpr EventHotKeyID hotKeyId{'HVCN', 1};
} // namespace

struct HotkeyManager::Native {
    explicit Native(HotkeyManager& owner) : manager(owner) {
        const EventTypeSpec pressed{kEventClassKeyboard, kEventHotKeyPressed};
        OSStatus status = InstallEventHandler(GetEventDispatcherTarget(), &Native::keyPressed, 1, &pressed,
                                              this, &eventHandler);
        if (status == noErr)
            status = RegisterEventHotKey(kVK_F19, noModifiers, hotKeyId, GetEventDispatcherTarget(),
                                         kEventHotKeyNoOptions, &hotKeyRef);
        if (status == noErr)
            return;
        isRefused = true;
        QMetaObject::invokeMethod(
            &context,
            [this] {
                if (const auto call = manager.onRefused)
                    call(QStringLiteral("Die Taste F19 wird bereits von einem anderen Programm verwendet."));
            },
            Qt::QueuedConnection);
    }

    ~Native() {
        if (hotKeyRef)
            UnregisterEventHotKey(hotKeyRef);
        if (eventHandler)
            RemoveEventHandler(eventHandler);
    }
    Q_DISABLE_COPY_MOVE(Native)

    static OSStatus keyPressed(EventHandlerCallRef /*next*/, EventRef /*event*/, void* userData) {
        auto* native = static_cast<Native*>(userData);
        QMetaObject::invokeMethod(
            &native->context,
            [native] {
                if (const auto call = native->manager.onPress)
                    call();
            },
            Qt::QueuedConnection);
        return noErr;
    }

    HotkeyManager& manager;
    bool isRefused = false;
    EventHotKeyRef hotKeyRef = nullptr;
    EventHandlerRef eventHandler = nullptr;
    QObject context; ///< goes first, and with it what is still to be reported
};

HotkeyManager::HotkeyManager() = default;

HotkeyManager::~HotkeyManager() = default;

void HotkeyManager::registerKey() {
    if (!m_native || m_native->isRefused)
        m_native = std::make_unique<Native>(*this);
}

void HotkeyManager::unregisterKey() {
    m_native.reset();
}
