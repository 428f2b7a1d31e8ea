#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVirtualObject>
#include <QList>
#include <QUuid>

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

/// A login manager for a bus of one's own: hands out delay locks and announces sleep and waking, on a
/// connection of its own. A lock is the write end of a pipe; the read end tells when all its copies are
/// closed. Needs a running event loop. Main thread.
class StandInLoginManager : public QDBusVirtualObject {
  public:
    StandInLoginManager() = default;

    ~StandInLoginManager() override { stop(); }
    Q_DISABLE_COPY_MOVE(StandInLoginManager)

    /// Takes the login manager's name on the bus at `busAddress`. False when the bus does not grant it.
    bool start(const QString& busAddress) {
        m_connectionName = QUuid::createUuid().toString();
        QDBusConnection bus = QDBusConnection::connectToBus(busAddress, m_connectionName);
        return bus.registerVirtualObject(path(), this) && bus.registerService(service());
    }

    /// Ends as a process that is killed: without an announcement, and with all locks gone.
    void stop() {
        if (bus().isConnected())
            bus().unregisterService(service()); // waits, so that the next one can have the name
        QDBusConnection::disconnectFromBus(m_connectionName);
        m_asleep = false;
        for (const int lock : std::exchange(m_locks, {}))
            ::close(lock);
    }

    /// Announces sleep, and refuses locks until waking.
    void sleep() {
        m_asleep = true;
        announce(true);
    }

    void wake() {
        m_asleep = false;
        announce(false);
    }

    /// Whether the programs together hold at least one lock.
    bool lockIsHeld() { return locksHeld() > 0; }

    int locksHeld() {
        m_locks.removeIf([](int lock) {
            pollfd state{lock, 0, 0};
            const bool released = ::poll(&state, 1, 0) == 1 && (state.revents & POLLHUP) != 0;
            if (released)
                ::close(lock);
            return released;
        });
        return static_cast<int>(m_locks.size());
    }

    QList<QVariantList> requests; ///< for a lock, with their arguments

  private:
    static QString service() { return QStringLiteral("org.freedesktop.login1"); }

    static QString path() { return QStringLiteral("/org/freedesktop/login1"); }

    static QString interface() { return QStringLiteral("org.freedesktop.login1.Manager"); }

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& /*bus*/) override {
        if (call.interface() != interface() || call.member() != QLatin1String("Inhibit") ||
            call.signature() != QLatin1String("ssss"))
            return false;
        requests.append(call.arguments());
        if (m_asleep)
            bus().send(call.createErrorReply(QDBusError::Failed, QStringLiteral("already asleep")));
        else
            grant(call);
        return true;
    }

    void grant(const QDBusMessage& call) {
        std::array<int, 2> ends{-1, -1};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
            qFatal("no pipe");
        m_locks.append(ends[0]);
        QDBusUnixFileDescriptor lock;
        lock.giveFileDescriptor(ends[1]);
        bus().send(call.createReply(QVariant::fromValue(lock)));
    }

    void announce(bool begins) {
        bus().send(QDBusMessage::createSignal(path(), interface(), QStringLiteral("PrepareForSleep"))
                   << begins);
    }

    [[nodiscard]] QDBusConnection bus() const { return QDBusConnection(m_connectionName); }

    QString m_connectionName;
    QList<int> m_locks; ///< the read ends
    bool m_asleep = false;
};
