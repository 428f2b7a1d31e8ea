// How long the panel lets its user wait: from the key to the painted frame, in the process itself.

#include "bench/LoopWatch.h"
#include "bench/Measured.h"

#include "Desktop/SceneGraph.h"
#include "desktop/DesktopFixture.h"
#include "support/Keyboard.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <cstdlib>

namespace {
constexpr int runs = 15;
constexpr int projects = 10'000;
constexpr uint8_t f19 = 197;

/// Milliseconds from the start of `action` to the next frame on the screen.
double untilPainted(const QQuickWindow& window, const std::function<void()>& action) {
    QElapsedTimer timer;
    double took = 0;
    QEventLoop loop;
    // Listening before the action: the frame may come while it still runs.
    QObject::connect(&window, &QQuickWindow::frameSwapped, &loop, [&] {
        constexpr double nanoseconds = 1e6;
        if (took == 0)
            took = static_cast<double>(timer.nsecsElapsed()) / nanoseconds;
        loop.quit();
    });
    QTimer::singleShot(5000, &loop, [&window] {
        qFatal("no frame comes; the window is %s", window.isVisible() ? "shown" : "hidden");
    });
    timer.start();
    action();
    if (took == 0)
        loop.exec();
    return took;
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
    Measured opening;
    for (int run = 0; run < runs; ++run) {
        QTest::qWait(400);
        opening.add(untilPainted(panel, [&] { keyboard.strike(f19); }));
        QTest::qWait(100);
        desktop.statusBar->close();
    }
    opening.print("F19 pressed to panel painted, shown before", 50);

    desktop.openPanel();
    const ProjectListModel& list = *desktop.state->visibleProjects();
    const auto filter = [&](const QByteArray& keys, const char* what) {
        Measured filtering;
        for (int run = 0; run < runs; ++run) {
            desktop.state->setSearchText({});
            QTest::qWait(200);
            for (const char key : keys)
                filtering.add(untilPainted(panel, [&] { QTest::keyClick(&panel, key); }));
            if (list.count() == 0 || list.count() >= projects / 2)
                qFatal("the keys filter nothing");
        }
        filtering.print(what, 16);
    };
    filter("alpe", "key pressed to filtered list painted, 10,000");
    filter("krnb", "the same where letters were left out");

    LoopWatch watch;
    for (int run = 0; run < runs; ++run)
        await(desktop.state->parts().loading.refresh());
    printFigure("longest block of the loop, 15 loads of 10,000", watch.longest(), "ms", 50);
    return EXIT_SUCCESS;
}
