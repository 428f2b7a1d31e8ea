#include "Desktop/Panel/Log/LogSelection.h"
#include "Desktop/Panel/PanelCommands.h"
#include "Desktop/Panel/PanelKeys.h"
#include "Desktop/Panel/Rows/ButtonRail.h"
#include "Desktop/Panel/Rows/HitMarkup.h"
#include "Desktop/StatusItem/PopoverPlacement.h"
#include "Desktop/StatusItem/StatusBarController.h"

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

    void keepsFramesInside() {
        const auto kept = [](int x, int y, int width = 640, int height = 660) {
            const QRect frame = keepInside(QRect(x, y, width, height), belowBar);
            return frame.size() == QSize(width, height) ? frame.topLeft() : QPoint(-9, -9);
        };
        QCOMPARE(kept(1280, 24), QPoint(1280, 24)); // touching
        QCOMPARE(kept(1281, 500), QPoint(1280, 420));
        QCOMPARE(kept(-20, 0), QPoint(0, 24));
        QCOMPARE(kept(10, 100, 2500), QPoint(0, 100));          // shows its left
        QCOMPARE(kept(100, 100, 640, 1200), QPoint(100, -120)); // shows its lower edge
    }

    void takesNoPointThatTheScreenShowsInPart() {
        QCOMPARE(wholePoints(QRect(1280, 16, 1067, 667), 1.5),
                 QRect(1280, 16, 1066, 666)); // 1600 x 1000 pixels
        QCOMPARE(wholePoints(QRect(0, 0, 1536, 864), 1.25), QRect(0, 0, 1536, 864));
    }

    void standsBesideItsItem() {
        QCOMPARE(besideItem(panel, QRect(900, 0, 24, 24), belowBar).topLeft(), QPoint(592, 28));
        QCOMPARE(besideItem(panel, QRect(1880, 0, 24, 24), belowBar).topLeft(), QPoint(1280, 28));
        const QRect aboveBar(0, 0, 1920, 1050);
        QCOMPARE(besideItem(panel, QRect(900, 1050, 30, 30), aboveBar).topLeft(), QPoint(595, 386));
        const QRect besideColumn(48, 0, 1872, 1080);
        QCOMPARE(besideItem(panel, QRect(0, 200, 48, 48), besideColumn).topLeft(), QPoint(48, 252));
    }

    void standsAtTheBarWhereTheItemIsUntold() {
        const auto corner = [](const QRect& visible, int x, int y) {
            return besideBar(panel, screen, visible, QPoint(x, y)).topLeft();
        };
        QCOMPARE(corner(belowBar, 300, 700), QPoint(1272, 32));
        QCOMPARE(corner(belowBar, 40, 10), QPoint(8, 32)); // clicked at its left
        QCOMPARE(corner(QRect(0, 0, 1920, 1040), 1700, 1060), QPoint(1272, 372));
        QCOMPARE(corner(QRect(60, 0, 1860, 1080), 30, 900), QPoint(68, 412));
        QCOMPARE(corner(QRect(60, 0, 1860, 1080), 30, 90), QPoint(68, 8));
        QCOMPARE(corner(QRect(0, 0, 1860, 1080), 500, 500), QPoint(1212, 412));
        QCOMPARE(corner(screen, 500, 500), QPoint(1272, 8)); // no bar told
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

    void clicksOnTheItemAreForThePanelUnlessItHasAMenu() {
        for (const auto reason : {QSystemTrayIcon::Context, QSystemTrayIcon::DoubleClick,
                                  QSystemTrayIcon::MiddleClick, QSystemTrayIcon::Trigger}) {
            QVERIFY(isForPanel(reason, false));
            QCOMPARE(isForPanel(reason, true), reason == QSystemTrayIcon::Trigger);
        }
    }

    void tipsShowTheKeysThatWork() {
        const PanelCommands commands;
        const QMetaObject* const shown = commands.metaObject();
        for (int i = shown->propertyOffset(); i < shown->propertyCount(); ++i) {
            const QString keys = shown->property(i).read(&commands).toString();
            const QKeySequence pressed(QString(keys).replace(u"Strg"_s, u"Ctrl"_s));
            QVERIFY2(PanelCommands::of(pressed) != PanelCommands::Command::none, qPrintable(keys));
        }
        QCOMPARE(commands.quit(), u"Strg+Q"_s);
        const QList<QKeySequence> ofTheSystem{Qt::CTRL | Qt::Key_H, Qt::CTRL | Qt::Key_M,
                                              Qt::CTRL | Qt::Key_Space};
        for (const QKeySequence& keys : ofTheSystem) {
            QVERIFY(PanelCommands::of(keys) == PanelCommands::Command::none);
            for (const ProjectAction& action : ProjectActions::table())
                QVERIFY(action.shortcut != keys);
        }
    }

    void movesThroughRows() {
        const auto after = [](int key, int row, bool control = false, int count = 25) {
            return rowAfter(key, control, row, count, 10);
        };
        using Row = std::optional<int>;
        for (const int key : {Qt::Key_Down, Qt::Key_Up})
            QCOMPARE(after(key, -1), Row(0));
        QCOMPARE(after(Qt::Key_Down, 24), Row(24));
        QCOMPARE(after(Qt::Key_Up, 0), Row(0));
        QCOMPARE(after(Qt::Key_PageDown, 3), Row(13));
        QCOMPARE(after(Qt::Key_PageDown, 20), Row(24));
        QCOMPARE(after(Qt::Key_PageUp, 12), Row(2));
        QCOMPARE(after(Qt::Key_Home, 12), Row()); // belongs to the cursor
        QCOMPARE(after(Qt::Key_Home, 12, true), Row(0));
        QCOMPARE(after(Qt::Key_End, 12, true), Row(24));
        for (const int key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_PageDown})
            QCOMPARE(after(key, -1, false, 0), Row()); // no rows
    }

    void markupInNamesIsShownAsItIs() {
        const HitMarkup markup;
        QCOMPARE(markup.marked(u"<i>&x"_s, {0, 2, 4, 1}, Qt::red, Qt::blue),
                 u"<b><font color=\"#ff0000\">&lt;i</font></b>&gt;&amp;"
                 "<b><font color=\"#ff0000\">x</font></b>"_s);
        QCOMPARE(markup.marked(u"a  <img src='http://x.example'>"_s, {}, Qt::red, Qt::blue),
                 u"a &nbsp;&lt;img src='http://x.example'&gt;"_s);
    }

    void theFrontOfADomainIsFaint() {
        const auto marked = [](const QString& domain, const QList<int>& hits) {
            return HitMarkup().marked(domain, hits, Qt::red, Qt::blue).remove(u" color=\"#0000ff\""_s);
        };
        QCOMPARE(marked(u"www.a.example"_s, {}), u"<font>www.</font>a.example"_s);
        QCOMPARE(marked(u"WWW.a.example"_s, {2, 3}),
                 u"<font>WW</font><b><font color=\"#ff0000\">W.a</font></b>.example"_s);
        for (const QString& whole : {u"www.de"_s, u"shop.www.example"_s, u"wwwa.example"_s})
            QCOMPARE(marked(whole, {}), whole);
    }

    void linesOfTheLogAreSelected() {
        ActivityLog log;
        LogSelection selection;
        selection.setLog(&log);
        QVERIFY(!selection.press(Qt::Key_Escape, 0)); // closes the panel
        for (int i = 0; i < 3; ++i)
            log.append(QString::number(i), ActivityLogLevel::info);

        const auto after = [&selection](int key, int modifiers = 0) {
            selection.press(key, modifiers);
            return std::pair(selection.first(), selection.last());
        };
        QCOMPARE(after(Qt::Key_Down), std::pair(2, 2)); // the newest, with nothing selected
        QCOMPARE(after(Qt::Key_Up, Qt::ShiftModifier), std::pair(1, 2));
        QCOMPARE(after(Qt::Key_Up), std::pair(0, 0));
        QCOMPARE(after(Qt::Key_End, Qt::ShiftModifier), std::pair(0, 2));
        QCOMPARE(after(Qt::Key_Escape), std::pair(-1, -1));
        QCOMPARE(after(Qt::Key_A, Qt::ControlModifier), std::pair(0, 2));
        for (int i = 0; i < 119; ++i)
            log.append(u"later"_s, ActivityLogLevel::info);
        QCOMPARE(after(Qt::Key_Return), std::pair(0, 0)); // two lines are gone
        QVERIFY(selection.text().endsWith(u" 2"_s));
        log.clear();
        QCOMPARE(selection.last(), -1);
    }
};

QTEST_GUILESS_MAIN(TestDesktopRules)
#include "tst_desktop_rules.moc"
