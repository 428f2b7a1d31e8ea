#include "System/Native/NetworkMonitor.h"

#include "support/OwnNetwork.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using namespace OwnNetwork;

constexpr auto quiet = 50ms;
constexpr int silence = 250;      ///< milliseconds in which nothing may come
constexpr int linkSilence = 1300; ///< the kernel may hold back the news of a link for a second

struct Listener {
    explicit Listener(std::chrono::milliseconds time = quiet) : monitor(time) {}

    NetworkMonitor monitor;
    QSignalSpy told{&monitor, &NetworkMonitor::changed};
};

} // namespace

class TestNetworkMonitor : public QObject {
    Q_OBJECT

    QByteArray m_refusal;

  public:
    /// `refusal`: why the kernel gives us no network to change; empty when it did.
    explicit TestNetworkMonitor(const QByteArray& refusal) : m_refusal(refusal) {}

  private Q_SLOTS:

    void initTestCase() {
        if (!m_refusal.isEmpty())
            QSKIP(m_refusal.constData());
        if (!ip(u"link add v0 type veth peer name v1"_s))
            QSKIP("no virtual interfaces here");
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
        const QString address = u"addr %1 198.51.100.7/24 dev v0"_s;
        row("address", {}, address.arg(u"add"_s), true);
        row("address gone", {address.arg(u"add"_s)}, address.arg(u"del"_s), true);
        const QString address6 = u"-6 addr %1 2001:db8:7::7/64 dev v0"_s;
        row("IPv6 address", {}, address6.arg(u"add"_s) + u" nodad"_s, true);
        const QString route = u"route %1 default via 192.0.2.%2"_s;
        row("route", {}, route.arg(u"add"_s, u"2"_s), true);
        row("another route", {route.arg(u"add"_s, u"2"_s)}, route.arg(u"replace"_s, u"3"_s), true);
        row("route gone", {route.arg(u"add"_s, u"2"_s)}, route.arg(u"del"_s, u"2"_s), true);
        const QString route6 = u"-6 route %1 default via 2001:db8::%2"_s;
        row("switched off", {}, u"link set v0 down"_s, true);
        row("unplugged", {}, u"link set v1 down"_s, true);
        row("plugged in", {u"link set v1 down"_s}, u"link set v1 up"_s, true);

        const QString lifetime = u" valid_lft %1 preferred_lft %1"_s;
        row("address renewed", {address.arg(u"add"_s) + lifetime.arg(600)},
            address.arg(u"change"_s) + lifetime.arg(900), false);
        row("route renewed", {route6.arg(u"add"_s, u"2 expires 600"_s)},
            route6.arg(u"replace"_s, u"2 expires 900"_s), false);
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
        const Witness witness;
        QVERIFY(ip(change));
        QTRY_VERIFY(isTold ? !listener.told.isEmpty() : witness.hasHeard());
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
    const QByteArray refusal =
        enterOwnNetwork() ? QByteArray() : "no network of our own: " + qt_error_string(errno).toUtf8();
    const QCoreApplication application(argc, argv);
    TestNetworkMonitor test(refusal);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_network_monitor.moc"
