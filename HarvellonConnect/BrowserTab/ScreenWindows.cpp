#include "BrowserTab/ScreenWindows.h"

#include "System/Native/XcbReply.h"

#include <QByteArray>
#include <QList>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstring>

namespace {
class Display {
  public:
    Display() : m_connection(xcb_connect(nullptr, &m_screen)) {}

    ~Display() { xcb_disconnect(m_connection); }
    Q_DISABLE_COPY_MOVE(Display)

    [[nodiscard]] bool isConnected() const { return xcb_connection_has_error(m_connection) == 0; }

    [[nodiscard]] xcb_window_t root() const {
        xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
        for (int i = 0; i < m_screen; ++i)
            xcb_screen_next(&screens);
        return screens.data->root;
    }

    [[nodiscard]] QByteArray property(xcb_window_t window, const char* name) const {
        constexpr uint32_t mostWords = 4096;
        const xcb_intern_atom_cookie_t asked =
            xcb_intern_atom(m_connection, 1, static_cast<uint16_t>(std::strlen(name)), name);
        const XcbReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(m_connection, asked, nullptr));
        if (!atom || atom->atom == XCB_ATOM_NONE)
            return {};
        const XcbReply<xcb_get_property_reply_t> value(xcb_get_property_reply(
            m_connection,
            xcb_get_property(m_connection, 0, window, atom->atom, XCB_GET_PROPERTY_TYPE_ANY, 0, mostWords),
            nullptr));
        if (!value)
            return {};
        return {static_cast<const char*>(xcb_get_property_value(value.get())),
                xcb_get_property_value_length(value.get())};
    }

    [[nodiscard]] QList<uint32_t> numbers(xcb_window_t window, const char* name) const {
        const QByteArray bytes = property(window, name);
        QList<uint32_t> values(bytes.size() / qsizetype(sizeof(uint32_t)));
        std::memcpy(values.data(), bytes.constData(), static_cast<size_t>(values.size()) * sizeof(uint32_t));
        return values;
    }

  private:
    int m_screen = 0;
    xcb_connection_t* m_connection;
};
} // namespace

QList<ScreenWindow> screenWindows() {
    const Display display;
    if (!display.isConnected())
        return {};
    QList<ScreenWindow> windows;
    QList<uint32_t> topDown = display.numbers(display.root(), "_NET_CLIENT_LIST_STACKING");
    std::reverse(topDown.begin(), topDown.end());
    for (const uint32_t window : topDown) {
        // Two texts, instance and class; an installed web app has an instance of its own.
        const QByteArrayList names = display.property(window, "WM_CLASS").toLower().split('\0');
        const QByteArray windowClass = names.value(1);
        if (windowClass.startsWith("google-chrome") || windowClass.startsWith("chromium"))
            windows.append({QString::fromUtf8(display.property(window, "_NET_WM_NAME")),
                            display.numbers(window, "_NET_WM_PID").value(0),
                            names.value(0).startsWith("crx_")});
    }
    return windows;
}
