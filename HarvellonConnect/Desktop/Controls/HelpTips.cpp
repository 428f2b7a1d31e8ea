#include "Desktop/Controls/HelpTips.h"

#include <QQmlEngine>

HelpTips* HelpTips::of(const QQuickItem* item) {
    static const int type = qmlTypeId("Harvellon.Desktop", 1, 0, "HelpTips");
    QQmlEngine* engine = qmlEngine(item);
    return engine ? engine->singletonInstance<HelpTips*>(type) : nullptr;
}

void HelpTips::enter(QQuickItem* item, const QString& text, const QString& keys) {
    if (text.isEmpty())
        return;
    m_item = item;
    m_text = text;
    m_keys = keys;
    m_shown = false;
    m_rest.start(delay, this);
    Q_EMIT shownChanged();
}

void HelpTips::leave(QQuickItem* item) {
    if (item != m_item)
        return; // the pointer is on the next control already
    m_rest.stop();
    m_item.clear();
    m_shown = false;
    Q_EMIT shownChanged();
}

void HelpTips::timerEvent(QTimerEvent* event) {
    if (event->timerId() != m_rest.timerId())
        return QObject::timerEvent(event);
    m_rest.stop();
    m_shown = true;
    Q_EMIT shownChanged();
}
