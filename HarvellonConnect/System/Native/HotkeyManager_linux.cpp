#include "System/Native/HotkeyManager.h"

#include "System/Native/HotkeyPortal_linux.h"
#include "System/Native/XcbReply.h"

#include <QList>
#include <QSocketNotifier>

#include <xcb/xcb.h>

#include <algorithm>
#include <array>
#include <span>

namespace {

constexpr xcb_keysym_t f19Symbol = 0xffd0;
constexpr xcb_keycode_t f19Code = 197; ///< where F19 lies when the keyboard layout does not name it
/// A grab holds for exactly these modifiers, so each state of Caps Lock and Num Lock needs its own.
constexpr std::array<uint16_t, 4> lockStates{0, XCB_MOD_MASK_LOCK, XCB_MOD_MASK_2,
                                             XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};

/// F19 of an X server, on a connection of its own. Main thread.
class X11Key {
  public:
    X11Key(std::function<void()> onPress, std::function<void()> onRefused)
        : m_onPress(std::move(onPress)), m_onRefused(std::move(onRefused)),
          m_connection(xcb_connect(nullptr, &m_screen)) {
        if (!isConnected())
            return;
        m_notifier =
            std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection), QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { readEvents(); });
        xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
        for (int i = 0; i < m_screen; ++i)
            xcb_screen_next(&screens);
        m_root = screens.data->root;
    }

    ~X11Key() {
        m_notifier.reset();
        xcb_disconnect(m_connection); // the server drops the grabs
    }
    Q_DISABLE_COPY_MOVE(X11Key)

    [[nodiscard]] bool isConnected() const { return xcb_connection_has_error(m_connection) == 0; }

    void grab() {
        grabKeys();
        readEvents();
    }

  private:
    /// Keys that stay are not ungrabbed first: a press in between would go to another program.
    void grabKeys() {
        const QList<xcb_keycode_t> before = std::exchange(m_codes, codesOfF19());
        for (const xcb_keycode_t code : before) {
            if (!m_codes.contains(code))
                xcb_ungrab_key(m_connection, code, m_root, XCB_MOD_MASK_ANY);
        }
        std::vector<xcb_void_cookie_t> requests;
        for (const xcb_keycode_t code : m_codes) {
            for (const uint16_t locks : lockStates)
                requests.push_back(xcb_grab_key_checked(m_connection, 0, m_root, locks, code,
                                                        XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        }
        bool granted = true;
        for (const xcb_void_cookie_t request : requests) {
            const XcbReply<xcb_generic_error_t> error(xcb_request_check(m_connection, request));
            granted = granted && !error;
        }
        if (!granted) {
            ungrab();
            m_onRefused();
        }
    }

    void ungrab() {
        for (const xcb_keycode_t code : m_codes)
            xcb_ungrab_key(m_connection, code, m_root, XCB_MOD_MASK_ANY);
        m_codes.clear();
        xcb_flush(m_connection);
    }

    [[nodiscard]] QList<xcb_keycode_t> codesOfF19() const {
        const xcb_setup_t* setup = xcb_get_setup(m_connection);
        const xcb_keycode_t first = setup->min_keycode;
        const auto count = static_cast<uint8_t>(setup->max_keycode - first + 1);
        const XcbReply<xcb_get_keyboard_mapping_reply_t> reply(xcb_get_keyboard_mapping_reply(
            m_connection, xcb_get_keyboard_mapping(m_connection, first, count), nullptr));
        QList<xcb_keycode_t> codes;
        if (reply && reply->keysyms_per_keycode > 0) {
            const std::span symbols(
                xcb_get_keyboard_mapping_keysyms(reply.get()),
                static_cast<size_t>(xcb_get_keyboard_mapping_keysyms_length(reply.get())));
            const size_t columns = reply->keysyms_per_keycode;
            for (size_t row = 0; (row + 1) * columns <= symbols.size(); ++row) {
                const auto symbolsOfKey = symbols.subspan(row * columns, columns);
                if (std::ranges::find(symbolsOfKey, f19Symbol) != symbolsOfKey.end())
                    codes.append(static_cast<xcb_keycode_t>(first + row));
            }
        }
        return codes.isEmpty() ? QList<xcb_keycode_t>{f19Code} : codes;
    }

    /// Reads until nothing is left. Waiting for a reply moves events from the socket into the queue of xcb,
    /// where the notifier does not see them, so the queue is read again after each grab: else a press right
    /// after a change of the keyboard mapping is lost. Each switch between two keyboards is such a change.
    void readEvents() {
        for (bool mappingChanged = true; mappingChanged;) {
            mappingChanged = false;
            while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(m_connection)}) {
                switch (event->response_type & 0x7f) {
                case XCB_KEY_PRESS:
                    keyPressed(*reinterpret_cast<const xcb_key_press_event_t*>(event.get()));
                    break;
                case XCB_KEY_RELEASE:
                    m_releasedAt = reinterpret_cast<const xcb_key_release_event_t*>(event.get())->time;
                    break;
                case XCB_MAPPING_NOTIFY:
                    mappingChanged = !m_codes.isEmpty();
                    break;
                default:
                    break;
                }
            }
            if (mappingChanged && isConnected())
                grabKeys();
        }
        if (!isConnected())
            m_notifier->setEnabled(false); // a closed socket stays readable for ever
    }

    void keyPressed(const xcb_key_press_event_t& press) {
        // A held key repeats as pairs of release and press that carry one and the same time.
        if (m_codes.contains(press.detail) && press.time != m_releasedAt)
            m_onPress();
    }

    std::function<void()> m_onPress;
    std::function<void()> m_onRefused;
    int m_screen = 0;
    xcb_connection_t* m_connection;
    xcb_window_t m_root = XCB_NONE;
    QList<xcb_keycode_t> m_codes; ///< the keys that are ours
    xcb_timestamp_t m_releasedAt = XCB_CURRENT_TIME;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

bool isWayland() {
    return qEnvironmentVariable("XDG_SESSION_TYPE") == QStringLiteral("wayland") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace

/// Both ways report through the event loop, so that their owner may let go of the key, or of everything, when
/// it hears from them.
struct HotkeyManager::Native {
    explicit Native(HotkeyManager& owner) : manager(owner) {
        if (!isWayland()) {
            x11 = std::make_unique<X11Key>(
                [this] { press(); },
                [this] {
                    refuse(QStringLiteral("Die Taste F19 wird bereits von einem anderen "
                                          "Programm verwendet."));
                });
            if (x11->isConnected()) {
                x11->grab();
                return;
            }
        }
        portal = std::make_unique<HotkeyPortal>();
        QObject::connect(portal.get(), &HotkeyPortal::pressed, &context, [this] { press(); });
        QObject::connect(portal.get(), &HotkeyPortal::refused, &context,
                         [this](const QString& reason) { refuse(reason); });
        portal->bind();
    }

    void press() {
        QMetaObject::invokeMethod(
            &context,
            [this] {
                if (const auto call = manager.onPress)
                    call();
            },
            Qt::QueuedConnection);
    }

    void refuse(const QString& reason) {
        isRefused = true;
        QMetaObject::invokeMethod(
            &context,
            [this, reason] {
                if (const auto call = manager.onRefused)
                    call(reason);
            },
            Qt::QueuedConnection);
    }

    HotkeyManager& manager;
    bool isRefused = false;
    std::unique_ptr<X11Key> x11;
    std::unique_ptr<HotkeyPortal> portal;
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
