#include "System/HotkeyManager.h"

#include <QProcess>
#include <QTest>

namespace {

const QString f19 = QStringLiteral("197");
const QString otherKey = QStringLiteral("203");
constexpr int quiet = 250; ///< milliseconds in which nothing may come

void command(const QString& program, const QStringList& arguments) {
    QCOMPARE(QProcess::execute(program, arguments), 0);
}

void xdotool(const QStringList& arguments) {
    command(QStringLiteral("xdotool"), arguments);
}

void mapKey(const QString& code, const QString& symbol) {
    command(QStringLiteral("xmodmap"),
            {QStringLiteral("-e"), QStringLiteral("keycode %1 = %2").arg(code, symbol)});
}

/// A hot key that counts what it hears.
struct Listener {
    Listener() {
        manager.onPress = [this] { ++presses; };
        manager.onRefused = [this](const QString& reason) { refusals.append(reason); };
    }

    HotkeyManager manager;
    int presses = 0;
    QStringList refusals;
};

} // namespace

class HotkeyTest : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void cleanup() { qputenv("XDG_SESSION_TYPE", "x11"); }

    void everyPressIsReported() {
        Listener key;
        key.manager.registerKey();
        for (int expected = 1; expected <= 3; ++expected) {
            xdotool({QStringLiteral("key"), f19});
            QTRY_COMPARE(key.presses, expected);
        }
        QVERIFY(key.refusals.isEmpty());
    }

    void locksDoNotMatter_data() {
        QTest::addColumn<QStringList>("locks");
        QTest::newRow("caps") << QStringList{QStringLiteral("Caps_Lock")};
        QTest::newRow("num") << QStringList{QStringLiteral("Num_Lock")};
        QTest::newRow("both") << QStringList{QStringLiteral("Caps_Lock"), QStringLiteral("Num_Lock")};
    }

    void locksDoNotMatter() {
        QFETCH(const QStringList, locks);
        Listener key;
        key.manager.registerKey();
        xdotool(QStringList{QStringLiteral("key")} + locks);
        xdotool({QStringLiteral("key"), f19});
        QTest::qWait(quiet);
        xdotool(QStringList{QStringLiteral("key")} + locks);
        QCOMPARE(key.presses, 1);
    }

    void registeringTwiceIsOnce() {
        Listener key;
        key.manager.registerKey();
        key.manager.registerKey();
        xdotool({QStringLiteral("key"), f19});
        QTest::qWait(quiet);
        QCOMPARE(key.presses, 1);
        QVERIFY(key.refusals.isEmpty());
    }

    void unregisteredIsSilent() {
        Listener key;
        key.manager.registerKey();
        key.manager.unregisterKey();
        xdotool({QStringLiteral("key"), f19});
        QTest::qWait(quiet);
        QCOMPARE(key.presses, 0);
        key.manager.registerKey();
        xdotool({QStringLiteral("key"), f19});
        QTRY_COMPARE(key.presses, 1);
    }

    void theSecondProgramIsRefused() {
        Listener first;
        first.manager.registerKey();
        Listener second;
        second.manager.registerKey();
        QVERIFY(second.refusals.isEmpty()); // never from inside the call
        QTRY_COMPARE(
            second.refusals,
            QStringList{QStringLiteral("Die Taste F19 wird bereits von einem anderen Programm verwendet.")});
        xdotool({QStringLiteral("key"), f19});
        QTRY_COMPARE(first.presses, 1);
        QCOMPARE(second.presses, 0);

        first.manager.unregisterKey();
        second.manager.registerKey();
        xdotool({QStringLiteral("key"), f19});
        QTRY_COMPARE(second.presses, 1);
        QCOMPARE(second.refusals.size(), 1);
    }

    void waylandWithoutAPortalSaysSo() {
        qputenv("XDG_SESSION_TYPE", "wayland");
        Listener key;
        key.manager.registerKey();
        QTRY_COMPARE(key.refusals, QStringList{QStringLiteral(
                                       "Dieser Desktop bietet keine systemweiten Tastenkürzel an.")});
    }

    void theLayoutIsFollowed() {
        Listener key;
        key.manager.registerKey();
        mapKey(otherKey, QStringLiteral("F19"));
        QTest::qWait(quiet);
        xdotool({QStringLiteral("key"), otherKey});
        QTRY_COMPARE(key.presses, 1);
        xdotool({QStringLiteral("key"), f19});
        QTest::qWait(quiet);
        QCOMPARE(key.presses, 1); // the layout says where F19 is, and it is not there
        mapKey(otherKey, QStringLiteral("NoSymbol"));
        QTest::qWait(quiet);
        xdotool({QStringLiteral("key"), f19});
        QTRY_COMPARE(key.presses, 2);
        QVERIFY(key.refusals.isEmpty());
    }
};

QTEST_GUILESS_MAIN(HotkeyTest)
#include "tst_hotkey.moc"
