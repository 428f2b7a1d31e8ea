#include "System/Native/SleepMonitor.h"

#include "System/Logging.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>
#include <QUuid>

namespace {
const QString managerService = QStringLiteral("org.freedesktop.login1");
const QString managerPath = QStringLiteral("/org/freedesktop/login1");
const QString managerInterface = QStringLiteral("org.freedesktop.login1.Manager");
const QString busService = QStringLiteral("org.freedesktop.DBus");
} // namespace

/// What the login manager says about sleep, and its delay lock: a descriptor that holds sleep back for as
/// long as it is open. Only connecting waits, for the bus and not for the login manager. Main thread.
class LoginManager : public QObject {
    Q_OBJECT

  public:
    LoginManager()
        : m_connectionName(QUuid::createUuid().toString()),
          m_bus(QDBusConnection::connectToBus(QDBusConnection::SystemBus, m_connectionName)),
          m_watcher(managerService, m_bus) {
        if (!m_bus.isConnected())
            return;
        connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
                [this](const QString&, const QString&, const QString& owner) { followOwner(owner); });
        QDBusMessage question = QDBusMessage::createMethodCall(
            busService, QStringLiteral("/org/freedesktop/DBus"), busService, QStringLiteral("GetNameOwner"));
        question << managerService;
        m_question = std::make_unique<QDBusPendingCallWatcher>(m_bus.asyncCall(question));
        connect(m_question.get(), &QDBusPendingCallWatcher::finished, this, [this] {
            const QDBusPendingReply<QString> owner = *m_question;
            if (owner.isValid())
                followOwner(owner.value());
        });
        // After the question for the owner, so that the answer is here before the first signal. Naming the
        // sender would make Qt ask for the owner as well, and block meanwhile.
        const QString anySender;
        m_bus.connect(anySender, managerPath, managerInterface, QStringLiteral("PrepareForSleep"), this,
                      SLOT(prepareForSleep(bool, QDBusMessage)));
    }

    ~LoginManager() override { QDBusConnection::disconnectFromBus(m_connectionName); }
    Q_DISABLE_COPY_MOVE(LoginManager)

    /// Closes the lock. One that has been asked for is closed as it arrives, because nobody waits for it.
    void releaseLock() {
        m_request.reset();
        m_lock = QDBusUnixFileDescriptor();
    }

  Q_SIGNALS:
    void fallsAsleep();
    void wakesUp();
    void ownerChanged();

  private Q_SLOTS:

    void prepareForSleep(bool begins, const QDBusMessage& signal) {
        if (signal.service() != m_owner) // any program can send a signal of this name
            return;
        if (begins) {
            Q_EMIT fallsAsleep();
            return;
        }
        takeLock();
        Q_EMIT wakesUp();
    }

  private:
    void followOwner(const QString& owner) {
        if (owner == m_owner)
            return;
        m_owner = owner;
        releaseLock();
        takeLock();
        Q_EMIT ownerChanged();
    }

    /// Asks for the lock, unless it is held or has been asked for.
    void takeLock() {
        if (m_owner.isEmpty() || m_request || m_lock.isValid())
            return;
        QDBusMessage call =
            QDBusMessage::createMethodCall(m_owner, managerPath, managerInterface, QStringLiteral("Inhibit"));
        call << QStringLiteral("sleep") << QStringLiteral("Harvellon Connect")
             << QStringLiteral("Verbindungen werden vor dem Ruhezustand getrennt") << QStringLiteral("delay");
        m_request = std::make_unique<QDBusPendingCallWatcher>(m_bus.asyncCall(call));
        connect(m_request.get(), &QDBusPendingCallWatcher::finished, this, [this] {
            const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *m_request;
            m_request.release()->deleteLater(); // it is still emitting
            if (reply.isValid())
                m_lock = reply.value();
            else
                qCWarning(lcDesktop) << "no sleep lock:" << reply.error().message();
        });
    }

    QString m_connectionName;
    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    QString m_owner; ///< the login manager's own name on the bus; empty while there is none
    QDBusUnixFileDescriptor m_lock;
    std::unique_ptr<QDBusPendingCallWatcher> m_question; ///< for the owner
    std::unique_ptr<QDBusPendingCallWatcher> m_request;  ///< for the lock, until it is answered
};

struct SleepMonitor::Native {
    LoginManager manager;
};

SleepMonitor::SleepMonitor(QObject* parent, std::chrono::milliseconds limit)
    : QObject(parent), m_native(std::make_unique<Native>()) {
    setLimit(limit);
    const LoginManager* manager = &m_native->manager;
    connect(manager, &LoginManager::fallsAsleep, this, &SleepMonitor::prepareForSleep);
    connect(manager, &LoginManager::wakesUp, this, &SleepMonitor::wakeUp);
    connect(manager, &LoginManager::ownerChanged, this, [this] {
        if (m_phase != Phase::Awake)
            wakeUp(); // a login manager that has ended will not tell of it
    });
}

SleepMonitor::~SleepMonitor() = default;

void SleepMonitor::letSystemSleep() {
    m_native->manager.releaseLock();
}

#include "SleepMonitor_linux.moc"
