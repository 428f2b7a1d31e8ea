#include "System/Native/HotkeyManager.h"
#include "System/Native/HotkeyPortal_linux.h"

#include "support/Keyboard.h"
#include "support/StandInPortal.h"

#include <QProcess>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using Registry = StandInPortal::Registry;

namespace {

constexpr uint8_t f19 = 197;
constexpr uint8_t otherKey = 203;
constexpr uint8_t capsLock = 66;
constexpr uint8_t numLock = 77;
constexpr xcb_keysym_t spaceSymbol = 0x20;
constexpr int quiet = 250; ///< milliseconds in which nothing may come
constexpr int apart = 5;   ///< milliseconds: a press in the same one as a release looks like a held key

void mapOtherKey(const char* symbol) {
    QCOMPARE(QProcess::execute(u"xmodmap"_s, {u"-e"_s, u"keycode 203 = "_s + QLatin1String(symbol)}), 0);
    QTest::qWait(quiet);
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

    Keyboard m_keyboard;
    PrivateBus m_bus;

  private Q_SLOTS:

    void initTestCase() {
        m_bus.start();
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
    }

    void cleanup() { qputenv("XDG_SESSION_TYPE", "x11"); }

    void locksDoNotMatter() {
        Listener key;
        key.manager.registerKey();
        int expected = 0;
        for (const QList<uint8_t>& locks : {QList{capsLock}, {numLock}, {capsLock, numLock}}) {
            for (const uint8_t code : locks + QList{f19} + locks)
                m_keyboard.strike(code);
            ++expected;
            QTRY_COMPARE(key.presses, expected);
            QTest::qWait(apart);
        }
    }

    void theSecondProgramIsRefused() {
        Listener first;
        first.manager.registerKey();
        Listener second;
        second.manager.registerKey();
        QVERIFY(second.refusals.isEmpty()); // never from inside the call
        QTRY_COMPARE(second.refusals,
                     QStringList{u"Die Taste F19 wird bereits von einem anderen Programm verwendet."_s});
        m_keyboard.strike(f19);
        QTRY_COMPARE(first.presses, 1);
        QCOMPARE(second.presses, 0);

        first.manager.unregisterKey();
        second.manager.registerKey();
        m_keyboard.strike(f19);
        QTRY_COMPARE(second.presses, 1);
        QCOMPARE(first.presses, 1);
        QCOMPARE(second.refusals.size(), 1);
    }

    void thePortalHearsTheProgramsNameFirst() {
        qputenv("XDG_SESSION_TYPE", "wayland");
        const QString refusal = u"Der Desktop hat die Taste F19 nicht freigegeben."_s;
        for (const Registry registry :
             {Registry::absent, Registry::present, Registry::late, Registry::knowsAlready,
              Registry::knowsNoSuchProgram, Registry::bindsNothing}) {
            StandInPortal portal(registry);
            Listener key;
            key.manager.registerKey();
            QTRY_COMPARE(portal.bindings + key.refusals.size(), 1);
            QCOMPARE(key.refusals, QStringList(registry >= Registry::knowsNoSuchProgram ? 1 : 0, refusal));
            portal.press();
            QTRY_COMPARE(key.presses, portal.bindings);
        }
        Listener key;
        key.manager.registerKey();
        QTRY_COMPARE(key.refusals,
                     QStringList{u"Dieser Desktop bietet keine systemweiten Tastenkürzel an."_s});
    }

    void aPortalThatStartsAnewOrClosesTheSessionBindsTheKeyAnew() {
        auto portal = std::make_unique<StandInPortal>(Registry::present);
        HotkeyPortal key(std::chrono::milliseconds(400));
        const QSignalSpy presses(&key, &HotkeyPortal::pressed);
        const QSignalSpy refusals(&key, &HotkeyPortal::refused);
        key.bind();
        QTRY_COMPARE(portal->bindings, 1);
        portal.reset();
        portal = std::make_unique<StandInPortal>(Registry::present);
        QTRY_COMPARE(portal->bindings, 1);
        for (const int wait : {500, 0}) { // one that closes at once would go on for ever
            portal->press();
            QTest::qWait(wait);
            portal->closeSession();
            QTRY_COMPARE(portal->bindings + refusals.size(), wait > 0 ? 2 : 3);
        }
        QCOMPARE(presses.size(), 2);
        QCOMPARE(refusals.size(), 1);
    }

    void theLayoutIsFollowed() {
        Listener key;
        key.manager.registerKey();
        mapOtherKey("F19");
        m_keyboard.strike(otherKey);
        QTRY_COMPARE(key.presses, 1);
        m_keyboard.strike(f19);
        QTest::qWait(quiet);
        QCOMPARE(key.presses, 1); // the layout says where F19 is, and it is not there
        mapOtherKey("NoSymbol");
        m_keyboard.strike(f19);
        QTRY_COMPARE(key.presses, 2);
        QVERIFY(key.refusals.isEmpty());
    }

    void noPressIsLostWhileTheMappingChanges() {
        Listener key;
        key.manager.registerKey();
        for (int expected = 1; expected <= 20; ++expected) {
            m_keyboard.map(otherKey, expected % 2 == 0 ? XCB_NONE : spaceSymbol);
            m_keyboard.strike(f19);
            QTRY_COMPARE(key.presses, expected);
            QTest::qWait(apart);
        }
        QVERIFY(key.refusals.isEmpty());
        m_keyboard.map(otherKey, XCB_NONE);
    }
};

QTEST_GUILESS_MAIN(HotkeyTest)
#include "tst_hotkey.moc"
