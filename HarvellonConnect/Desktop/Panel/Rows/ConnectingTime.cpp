#include "Desktop/Panel/Rows/ConnectingTime.h"

#include <algorithm>

QString connectingText(const QDateTime& since, const QDateTime& now) {
    const qint64 seconds = since.isValid() ? std::max<qint64>(0, since.secsTo(now)) : 0;
    return QStringLiteral("Verbinde ... %1 s").arg(seconds);
}

void ConnectingTime::setSince(const QDateTime& since) {
    if (since == m_since)
        return;
    m_since = since;
    Q_EMIT textChanged();
}

void ConnectingTime::setRunning(bool running) {
    constexpr int second = 1000;
    if (running == m_tick.isActive())
        return;
    running ? m_tick.start(second, this) : m_tick.stop();
    Q_EMIT runningChanged();
    Q_EMIT textChanged();
}

QString ConnectingTime::text() const {
    return connectingText(m_since, QDateTime::currentDateTime());
}

void ConnectingTime::timerEvent(QTimerEvent* event) {
    if (event->timerId() == m_tick.timerId())
        Q_EMIT textChanged();
}
