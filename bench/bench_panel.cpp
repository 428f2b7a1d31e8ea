// How long the panel lets its user wait: from the key to the painted frame, in the process itself.

#include "bench/Measured.h"

#include "Desktop/SceneGraph.h"
#include "desktop/DesktopFixture.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <xcb/xtest.h>

#include <cstdlib>

namespace {
constexpr int runs = 15;
constexpr int projects = 10'000;
constexpr uint8_t f19 = 197;

/// Presses keys as the keyboard does: through the X server.
class Keyboard {
  public:
    Keyboard() : m_connection(xcb_connect(nullptr, nullptr)) {}

    ~Keyboard() { xcb_disconnect(m_connection); }
    Q_DISABLE_COPY_MOVE(Keyboard)

    void strike(uint8_t key) {
        for (const uint8_t type : {XCB_KEY_PRESS, XCB_KEY_RELEASE})
            xcb_test_fake_input(m_connection, type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(m_connection);
    }

  private:
    xcb_connection_t* m_connection;
};

/// Waits for the next frame that is on the screen.
void awaitFrame(const QQuickWindow& window) {
    QEventLoop loop;
    const auto painted = QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit);
    QTimer::singleShot(5000, &loop, [] { qFatal("no frame comes"); });
    loop.exec();
    QObject::disconnect(painted);
}

double milliseconds(const QElapsedTimer& timer) {
    constexpr double nanoseconds = 1e6;
    return static_cast<double>(timer.nsecsElapsed()) / nanoseconds;
}
} // namespace

int main(int argc, char* argv[]) {
    chooseSceneGraph();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QTemporaryDir folder;
    const sandbox::Sandbox platform({folder.path(), projects, false});
    DesktopFixture desktop(platform.server());
    desktop.signIn("erika");
    desktop.openPanel();
    desktop.statusBar->close();
    PanelWindow& panel = desktop.statusBar->panel();
    Keyboard keyboard;
    QElapsedTimer timer;

    Measured opening;
    for (int run = 0; run < runs; ++run) {
        QTest::qWait(400);
        timer.start();
        keyboard.strike(f19);
        awaitFrame(panel);
        opening.add(milliseconds(timer));
        QTest::qWait(100);
        desktop.statusBar->close();
    }
    opening.print("F19 pressed to panel painted, shown before", 50);

    desktop.openPanel();
    const ProjectListModel& list = *desktop.state->visibleProjects();
    Measured filtering;
    for (int run = 0; run < runs; ++run) {
        desktop.state->setSearchText({});
        QTest::qWait(200);
        for (const char key : {'a', 'l', 'p', 'e'}) {
            timer.start();
            QTest::keyClick(&panel, key);
            awaitFrame(panel);
            filtering.add(milliseconds(timer));
        }
        if (list.count() == 0 || list.count() >= projects / 2)
            qFatal("the keys filter nothing");
    }
    filtering.print("key pressed to filtered list painted, 10,000", 16);
    return EXIT_SUCCESS;
}
