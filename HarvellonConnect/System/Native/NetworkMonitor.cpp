#include "System/Native/NetworkMonitor.h"

#include <QHostAddress>
#include <QNetworkInterface>

#include <algorithm>

namespace {
constexpr std::chrono::seconds longestDelay{2};
} // namespace

NetworkMonitor::NetworkMonitor(std::chrono::milliseconds quiet, QObject* parent) : QObject(parent) {
    m_settled.setInterval(quiet);
    m_overdue.setInterval(longestDelay);
    m_overdue.setTimerType(Qt::PreciseTimer); // a coarse timer may be a twentieth late
    for (QTimer* timer : {&m_settled, &m_overdue}) {
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this, &NetworkMonitor::tell);
    }
    m_watch = watch([this] { noteChange(); });
}

NetworkMonitor::~NetworkMonitor() = default;

void NetworkMonitor::noteChange() {
    m_settled.start();
    if (!m_overdue.isActive())
        m_overdue.start();
}

void NetworkMonitor::tell() {
    m_settled.stop();
    m_overdue.stop();
    Q_EMIT changed();
}

bool NetworkMonitor::hasNetwork() {
    const QList<QHostAddress> addresses = QNetworkInterface::allAddresses();
    return std::any_of(addresses.begin(), addresses.end(), [](const QHostAddress& address) {
        return !address.isLoopback() && !address.isLinkLocal();
    });
}
