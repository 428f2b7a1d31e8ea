// From the start of a process to its first window on the screen: the status icon of this program, the window
// of sirikali, another mounting tool in the tray.
//
//     bench_start PROGRAM SERVER HOME

#include "bench/Measured.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QThread>

#include <xcb/xcb.h>

#include <poll.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

namespace {
constexpr int runs = 21;
constexpr double share = 0.25;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

template <typename T>
using Reply = std::unique_ptr<T, Free>;

/// Listens for new windows. Polling for one would keep the X server busy and slow down the programs that are
/// measured.
class Screen {
  public:
    Screen() : m_connection(xcb_connect(nullptr, nullptr)) {
        constexpr uint32_t births = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        xcb_change_window_attributes(m_connection, root, XCB_CW_EVENT_MASK, &births);
        xcb_flush(m_connection);
    }

    ~Screen() { xcb_disconnect(m_connection); }
    Q_DISABLE_COPY_MOVE(Screen)

    /// Waits until a new window of that class can be seen that is at least `width` wide.
    void awaitWindow(std::string_view name, int width) {
        m_born.clear();
        QElapsedTimer timer;
        timer.start();
        while (!isShown(name, width)) {
            pollfd incoming{xcb_get_file_descriptor(m_connection), POLLIN, 0};
            if (timer.hasExpired(20000))
                qFatal("no window comes");
            poll(&incoming, 1, 20);
            hearAll();
        }
    }

    void hearAll() {
        while (hear())
            ;
    }

  private:
    bool hear() {
        const Reply<xcb_generic_event_t> event(xcb_poll_for_event(m_connection));
        if (!event)
            return false;
        if ((event->response_type & 0x7f) == XCB_CREATE_NOTIFY) {
            constexpr uint32_t life = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
            const auto window = reinterpret_cast<const xcb_create_notify_event_t*>(event.get())->window;
            xcb_change_window_attributes(m_connection, window, XCB_CW_EVENT_MASK, &life);
            xcb_flush(m_connection);
            m_born.push_back(window);
        }
        return true;
    }

    [[nodiscard]] bool isShown(std::string_view name, int width) const {
        return std::any_of(m_born.begin(), m_born.end(),
                           [&](xcb_window_t window) { return isWanted(window, name, width); });
    }

    [[nodiscard]] bool isWanted(xcb_window_t window, std::string_view name, int width) const {
        const auto attributes = xcb_get_window_attributes(m_connection, window);
        const auto geometry = xcb_get_geometry(m_connection, window);
        const auto names =
            xcb_get_property(m_connection, 0, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 0, 64);
        const Reply<xcb_get_window_attributes_reply_t> state(
            xcb_get_window_attributes_reply(m_connection, attributes, nullptr));
        const Reply<xcb_get_geometry_reply_t> size(xcb_get_geometry_reply(m_connection, geometry, nullptr));
        const Reply<xcb_get_property_reply_t> text(xcb_get_property_reply(m_connection, names, nullptr));
        if (!state || !size || !text || state->map_state != XCB_MAP_STATE_VIEWABLE || size->width < width)
            return false;
        const std::string_view both(static_cast<const char*>(xcb_get_property_value(text.get())),
                                    static_cast<size_t>(xcb_get_property_value_length(text.get())));
        return both.find(name) != std::string_view::npos;
    }

    xcb_connection_t* m_connection;
    std::vector<xcb_window_t> m_born;
};

double start(Screen& screen, const QString& program, std::string_view name, int width) {
    screen.hearAll();
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    QElapsedTimer timer;
    timer.start();
    process.start(program, QStringList());
    screen.awaitWindow(name, width);
    const auto took = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    QThread::msleep(300);
    process.terminate();
    process.waitForFinished();
    return took;
}
} // namespace

int main(int argc, char* argv[]) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    qputenv("HARVELLON_SERVER", arguments.value(2).toUtf8());
    qputenv("HARVELLON_HOME", arguments.value(3).toUtf8());
    Screen screen;
    Measured ours;
    Measured theirs;
    for (int run = 0; run < runs; ++run) { // in turns, so that both meet the same machine
        ours.add(start(screen, arguments.value(1), "HarvellonConnect", 16));
        theirs.add(start(screen, QStringLiteral("sirikali"), "sirikali", 300));
    }
    theirs.print("sirikali: process start to its window", std::nullopt);
    ours.print("process start to status icon shown", share * theirs.median());
    return EXIT_SUCCESS;
}
