#include "System/Native/NetworkMonitor.h"

#include "support/OwnNetwork.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using namespace OwnNetwork;

bool hasOwnNetwork = false;
constexpr auto quiet = 50ms;
constexpr int silence = 250;      ///< milliseconds in which nothing may come
constexpr int linkSilence = 1300; ///< the kernel may hold back the news of a link for a second

struct Listener {
    NetworkMonitor monitor{quiet};
    QSignalSpy told{&monitor, &NetworkMonitor::changed};
};

} // namespace

class TestNetworkMonitor : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void initTestCase() {
        if (!hasOwnNetwork || !ip(u"link add v0 type veth peer name v1"_s))
            QSKIP("no network of our own, or no virtual interfaces");
        QVERIFY(ip(u"link set lo up"_s));
    }

    void init() {
        const QStringList commands{u"link set v1 up"_s,
                                   u"link set v0 up"_s,
                                   u"route flush dev v0"_s,
                                   u"-6 route flush dev v0"_s,
                                   u"addr flush dev v0 scope global"_s,
                                   u"addr flush dev lo to 198.51.100.0/24"_s,
                                   u"addr add 192.0.2.1/24 dev v0"_s,
                                   u"addr add 2001:db8::1/64 dev v0 nodad"_s};
        for (const QString& command : commands)
            QVERIFY2(ip(command), qUtf8Printable(command));
        QTRY_VERIFY(isRunning());
    }

    void whatIsTold_data() {
        QTest::addColumn<QStringList>("before");
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("isTold");
        const auto row = [](const char* name, const QStringList& before, const QString& change, bool isTold) {
            QTest::newRow(name) << before << change << isTold;
        };
        row("address", {}, u"addr add 198.51.100.7/24 dev v0"_s, true);
        row("address gone", {u"addr add 198.51.100.7/24 dev v0"_s}, u"addr del 198.51.100.7/24 dev v0"_s,
            true);
        const QString route = u"route add default via 192.0.2.2"_s;
        row("route", {}, route, true);
        row("another route", {route}, u"route replace default via 192.0.2.3"_s, true);
        row("route gone", {route}, u"route del default via 192.0.2.2"_s, true);
        row("unplugged", {}, u"link set v1 down"_s, true);
        row("plugged in", {u"link set v1 down"_s}, u"link set v1 up"_s, true);

        const QString address = u"addr %1 198.51.100.7/24 dev v0 valid_lft %2 preferred_lft %2"_s;
        row("address renewed", {address.arg(u"add"_s).arg(600)}, address.arg(u"change"_s).arg(900), false);
        const QString route6 = u"-6 route %1 default via 2001:db8::2 expires %2"_s;
        row("route renewed", {route6.arg(u"add"_s).arg(600)}, route6.arg(u"replace"_s).arg(900), false);
        row("loopback address", {}, u"addr add 198.51.100.8/32 dev lo"_s, false);
        row("link-local address", {}, u"-6 addr add fe80::77/64 dev v0 nodad"_s, false);
        row("another table", {}, u"route add default via 192.0.2.2 table 100"_s, false);
        row("interface without address", {u"link add v2 type veth peer name v3"_s, u"link set v3 up"_s},
            u"link set v2 up"_s, false);
        row("name of an interface", {}, u"link set v0 alias renamed"_s, false);
    }

    void whatIsTold() {
        QFETCH(const QStringList, before);
        QFETCH(const QString, change);
        QFETCH(const bool, isTold);
        for (const QString& command : before)
            QVERIFY(ip(command));
        QTest::qWait(change.startsWith(u"link"_s) ? linkSilence : silence / 2);
        const Listener listener;
        QVERIFY(ip(change));
        QTest::qWait(change.startsWith(u"link"_s) ? linkSilence : silence);
        QCOMPARE(listener.told.size(), isTold ? 1 : 0);
    }

    void aBurstIsToldOnce() {
        const Listener listener;
        QStringList commands;
        for (int i = 1; i <= 60; ++i)
            commands.append(u"addr add 198.51.100.%1/24 dev v0"_s.arg(i));
        QVERIFY(ipBatch(commands));
        QTRY_COMPARE(listener.told.size(), 1);
        QTest::qWait(silence);
        QCOMPARE(listener.told.size(), 1);
    }
};

int main(int argc, char* argv[]) {
    hasOwnNetwork = enterOwnNetwork();
    const QCoreApplication application(argc, argv);
    TestNetworkMonitor test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_network_monitor.moc"
