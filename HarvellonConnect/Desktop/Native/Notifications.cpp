#include "Desktop/Native/Notifications.h"

#include <QIcon>
#include <QSystemTrayIcon>

void Notifications::setItem(QSystemTrayIcon& item) {
    m_item = &item;
    prepare();
    connect(&item, &QSystemTrayIcon::messageClicked, this, [this] { Q_EMIT clicked(m_domainAtItem); });
}

void Notifications::showAtItem(const QString& title, const QString& text, const QString& domain) {
    if (!m_item)
        return;
    m_domainAtItem = domain;
    m_item->showMessage(title, text, QIcon(QStringLiteral(":/icons/AppIcon.png")));
}

void Notifications::answered(bool shown, const QString& title, const QString& text) {
    if (shown)
        Q_EMIT allowed();
    else
        Q_EMIT refused(text.isEmpty() ? text : title + QStringLiteral(": ") + text);
}
