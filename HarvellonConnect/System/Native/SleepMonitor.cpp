#include "System/Native/SleepMonitor.h"

void SleepMonitor::setLimit(std::chrono::milliseconds limit) {
    m_limit.setSingleShot(true);
    m_limit.setInterval(limit);
    connect(&m_limit, &QTimer::timeout, this, &SleepMonitor::allowSleep);
}

void SleepMonitor::allowSleep() {
    if (m_phase != Phase::Preparing)
        return;
    m_phase = Phase::Asleep;
    m_limit.stop();
    letSystemSleep();
}

void SleepMonitor::prepareForSleep() {
    switch (m_phase) {
    case Phase::Awake:
        m_phase = Phase::Preparing;
        m_limit.start();
        Q_EMIT aboutToSleep();
        return;
    case Phase::Preparing:
        return;
    case Phase::Asleep:
        letSystemSleep(); // nothing has been started since the sleep before
        return;
    }
}

void SleepMonitor::wakeUp() {
    m_phase = Phase::Awake;
    m_limit.stop();
    Q_EMIT wokeUp();
}
