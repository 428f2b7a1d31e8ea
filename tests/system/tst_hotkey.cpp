#include "System/Native/HotkeyManager.h"

#include "support/Keyboard.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString f19 = u"197"_s;
const QString otherKey = u"203"_s;
constexpr xcb_keysym_t spaceSymbol = 0x20;
constexpr int quiet = 250; ///< milliseconds in which nothing may come

void command(const QString& program, const QStringList& arguments) {
    QCOMPARE(QProcess::execute(program, arguments), 0);
}

void xdotool(const QStringList& arguments) {
    command(u"xdotool"_s, arguments);
}

void mapKey(const QString& code, const QString& symbol) {
    command(u"xmodmap"_s, {u"-e"_s, u"keycode %1 = %2"_s.arg(code, symbol)});
}

/// A hot key that counts its presses.
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
            xdotool({u"key"_s, f19});
            QTRY_COMPARE(key.presses, expected);
        }
        QVERIFY(key.refusals.isEmpty());
    }

    void locksDoNotMatter_data() {
        QTest::addColumn<QStringList>("locks");
        QTest::newRow("caps") << QStringList{u"Caps_Lock"_s};
        QTest::newRow("num") << QStringList{u"Num_Lock"_s};
        QTest::newRow("both") << QStringList{u"Caps_Lock"_s, u"Num_Lock"_s};
    }

    void locksDoNotMatter() {
        QFETCH(const QStringList, locks);
        Listener key;
        key.manager.registerKey();
        xdotool(QStringList{u"key"_s} + locks);
        xdotool({u"key"_s, f19});
        QTest::qWait(quiet);
        xdotool(QStringList{u"key"_s} + locks);
        QCOMPARE(key.presses, 1);
    }

    void unregisteredIsSilent() {
        Listener key;
        key.manager.registerKey();
        key.manager.unregisterKey();
        xdotool({u"key"_s, f19});
        QTest::qWait(quiet);
        QCOMPARE(key.presses, 0);
        key.manager.registerKey();
        xdotool({u"key"_s, f19});
        QTRY_COMPARE(key.presses, 1);
    }

    void theSecondProgramIsRefused() {
        Listener first;
        first.manager.registerKey();
        Listener second;
        second.manager.registerKey();
        QVERIFY(second.refusals.isEmpty()); // never from inside the call
        QTRY_COMPARE(second.refusals,
                     QStringList{u"Die Taste F19 wird bereits von einem anderen Programm verwendet."_s});
        xdotool({u"key"_s, f19});
        QTRY_COMPARE(first.presses, 1);
        QCOMPARE(second.presses, 0);

        first.manager.unregisterKey();
        second.manager.registerKey();
        xdotool({u"key"_s, f19});
        QTRY_COMPARE(second.presses, 1);
        QCOMPARE(second.refusals.size(), 1);
    }

    void waylandWithoutAPortalSaysSo() {
        qputenv("XDG_SESSION_TYPE", "wayland");
        Listener key;
        key.manager.registerKey();
        QTRY_COMPARE(key.refusals,
                     QStringList{u"Dieser Desktop bietet keine systemweiten Tastenkürzel an."_s});
    }

    void theLayoutIsFollowed() {
        Listener key;
        key.manager.registerKey();
        mapKey(otherKey, u"F19"_s);
        QTest::qWait(quiet);
        xdotool({u"key"_s, otherKey});
        QTRY_COMPARE(key.presses, 1);
        xdotool({u"key"_s, f19});
        QTest::qWait(quiet);
        QCOMPARE(key.presses, 1); // the layout says where F19 is, and it is not there
        mapKey(otherKey, u"NoSymbol"_s);
        QTest::qWait(quiet);
        xdotool({u"key"_s, f19});
        QTRY_COMPARE(key.presses, 2);
        QVERIFY(key.refusals.isEmpty());
    }

    void noPressIsLostWhileTheMappingChanges() {
        Listener key;
        key.manager.registerKey();
        Keyboard keyboard;
        for (int expected = 1; expected <= 20; ++expected) {
            keyboard.map(otherKey.toUShort(), expected % 2 == 0 ? XCB_NONE : spaceSymbol);
            keyboard.strike(f19.toUShort());
            QTRY_COMPARE(key.presses, expected);
            QTest::qWait(5); // presses within one millisecond look like the repeats of a held key
        }
        mapKey(otherKey, u"NoSymbol"_s);
    }
};

QTEST_GUILESS_MAIN(HotkeyTest)
#include "tst_hotkey.moc"
