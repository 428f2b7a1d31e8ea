#include "Desktop/Panel/PanelKeys.h"
#include "Desktop/Panel/Rows/ButtonRail.h"
#include "Desktop/StatusItem/PopoverPlacement.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QSize panel{640, 660};
const QRect screen{0, 0, 1920, 1080};
const QRect belowBar{0, 24, 1920, 1056};
} // namespace

/// What is decided without a window.
class TestDesktopRules : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void keepsFramesInside_data() {
        QTest::addColumn<QRect>("frame");
        QTest::addColumn<QPoint>("corner");
        QTest::newRow("inside stays") << QRect(100, 100, 640, 660) << QPoint(100, 100);
        QTest::newRow("touching stays") << QRect(1280, 24, 640, 660) << QPoint(1280, 24);
        QTest::newRow("right by one") << QRect(1281, 100, 640, 660) << QPoint(1280, 100);
        QTest::newRow("right by much") << QRect(1800, 100, 640, 660) << QPoint(1280, 100);
        QTest::newRow("left") << QRect(-20, 100, 640, 660) << QPoint(0, 100);
        QTest::newRow("above") << QRect(100, 0, 640, 660) << QPoint(100, 24);
        QTest::newRow("below") << QRect(100, 500, 640, 660) << QPoint(100, 420);
        QTest::newRow("corner") << QRect(1900, 1000, 640, 660) << QPoint(1280, 420);
        QTest::newRow("too wide shows its left") << QRect(10, 100, 2500, 660) << QPoint(0, 100);
        QTest::newRow("too tall shows its lower edge") << QRect(100, 100, 640, 1200) << QPoint(100, -120);
    }

    void keepsFramesInside() {
        QFETCH(QRect, frame);
        QFETCH(QPoint, corner);
        const QRect kept = keepInside(frame, belowBar);
        QCOMPARE(kept.topLeft(), corner);
        QCOMPARE(kept.size(), frame.size());
    }

    void standsBesideItsItem() {
        QCOMPARE(besideItem(panel, QRect(900, 0, 24, 24), belowBar).topLeft(), QPoint(592, 28));
        QCOMPARE(besideItem(panel, QRect(1880, 0, 24, 24), belowBar).topLeft(), QPoint(1280, 28));
        const QRect aboveBar(0, 0, 1920, 1050);
        QCOMPARE(besideItem(panel, QRect(900, 1050, 30, 30), aboveBar).topLeft(), QPoint(595, 386));
        const QRect besideColumn(48, 0, 1872, 1080);
        QCOMPARE(besideItem(panel, QRect(0, 200, 48, 48), besideColumn).topLeft(), QPoint(48, 252));
    }

    void standsAtTheBarWhereTheItemIsUntold_data() {
        QTest::addColumn<QRect>("visible");
        QTest::addColumn<QPoint>("pointer");
        QTest::addColumn<QPoint>("corner");
        QTest::newRow("upper bar, pointer anywhere") << belowBar << QPoint(300, 700) << QPoint(1272, 32);
        QTest::newRow("upper bar, clicked at its left") << belowBar << QPoint(40, 10) << QPoint(8, 32);
        QTest::newRow("lower bar") << QRect(0, 0, 1920, 1040) << QPoint(1700, 1060) << QPoint(1272, 372);
        QTest::newRow("left bar") << QRect(60, 0, 1860, 1080) << QPoint(30, 900) << QPoint(68, 412);
        QTest::newRow("left bar, clicked at its top")
            << QRect(60, 0, 1860, 1080) << QPoint(30, 90) << QPoint(68, 8);
        QTest::newRow("right bar") << QRect(0, 0, 1860, 1080) << QPoint(500, 500) << QPoint(1212, 412);
        QTest::newRow("no bar told") << screen << QPoint(500, 500) << QPoint(1272, 8);
    }

    void standsAtTheBarWhereTheItemIsUntold() {
        QFETCH(QRect, visible);
        QFETCH(QPoint, pointer);
        QFETCH(QPoint, corner);
        QCOMPARE(besideBar(panel, screen, visible, pointer).topLeft(), corner);
    }

    void theNextButtonMayBeEnteredBeforeThisOneIsLeft() {
        ButtonRail rail;
        const auto cache = static_cast<int>(HoverTarget::cache);
        const auto safari = static_cast<int>(HoverTarget::safari);
        rail.pointer(cache, true);
        rail.pointer(safari, true);
        rail.pointer(cache, false);
        QCOMPARE(rail.hoveredButton(), std::optional(HoverTarget::safari));
        rail.pointer(safari, false);
        QCOMPARE(rail.hoveredButton(), std::nullopt);
    }

    void movesThroughRows_data() {
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("control");
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("after"); // -9: the key is not ours
        QTest::newRow("first down") << int(Qt::Key_Down) << false << -1 << 0;
        QTest::newRow("first up") << int(Qt::Key_Up) << false << -1 << 0;
        QTest::newRow("down at the end") << int(Qt::Key_Down) << false << 24 << 24;
        QTest::newRow("up at the start") << int(Qt::Key_Up) << false << 0 << 0;
        QTest::newRow("page down") << int(Qt::Key_PageDown) << false << 3 << 13;
        QTest::newRow("page down at the end") << int(Qt::Key_PageDown) << false << 20 << 24;
        QTest::newRow("page up") << int(Qt::Key_PageUp) << false << 12 << 2;
        QTest::newRow("home belongs to the cursor") << int(Qt::Key_Home) << false << 12 << -9;
        QTest::newRow("control home") << int(Qt::Key_Home) << true << 12 << 0;
        QTest::newRow("control end") << int(Qt::Key_End) << true << 12 << 24;
    }

    void movesThroughRows() {
        QFETCH(int, key);
        QFETCH(bool, control);
        QFETCH(int, row);
        QFETCH(int, after);
        QCOMPARE(rowAfter(key, control, row, 25, 10).value_or(-9), after);
        QCOMPARE(rowAfter(key, control, -1, 0, 10), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestDesktopRules)
#include "tst_desktop_rules.moc"
