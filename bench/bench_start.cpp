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

#include <cstdlib>
#include <memory>
#include <string_view>

namespace {
constexpr int runs = 21;
constexpr double share = 0.25;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

template <typename T>
using Reply = std::unique_ptr<T, Free>;

class Screen {
  public:
    Screen() : m_connection(xcb_connect(nullptr, nullptr)) {
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
    }

    ~Screen() { xcb_disconnect(m_connection); }
    Q_DISABLE_COPY_MOVE(Screen)

    /// Whether a window of that class can be seen that is at least `width` wide.
    [[nodiscard]] bool shows(std::string_view name, int width) const {
        return showsBelow(m_root, name, width);
    }

  private:
    [[nodiscard]] bool showsBelow(xcb_window_t parent, std::string_view name, int width) const {
        const Reply<xcb_query_tree_reply_t> tree(
            xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, parent), nullptr));
        if (!tree)
            return false;
        const xcb_window_t* children = xcb_query_tree_children(tree.get());
        const int count = xcb_query_tree_children_length(tree.get());
        for (int i = 0; i < count; ++i) {
            if (isWanted(children[i], name, width) || showsBelow(children[i], name, width))
                return true;
        }
        return false;
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
    xcb_window_t m_root = 0;
};

double start(const Screen& screen, const QString& program, std::string_view name, int width) {
    while (screen.shows(name, width))
        QThread::msleep(20);
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    QElapsedTimer timer;
    timer.start();
    process.start(program, QStringList());
    while (!screen.shows(name, width)) {
        if (timer.hasExpired(20000))
            qFatal("no window comes");
        QThread::usleep(200);
    }
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
    const Screen screen;
    Measured ours;
    Measured theirs;
    for (int run = 0; run < runs; ++run) { // in turns, so that both meet the same machine
        ours.add(start(screen, arguments.value(1), "HarvellonConnect", 16));
        theirs.add(start(screen, QStringLiteral("sirikali"), "sirikali", 300));
    }
    theirs.print("sirikali: process start to its window", 0);
    ours.print("process start to status icon shown", share * theirs.median());
    return EXIT_SUCCESS;
}
