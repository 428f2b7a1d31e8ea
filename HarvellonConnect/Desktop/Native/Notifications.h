#pragma once

#include <QObject>
#include <QString>

class NotificationService;
class QSystemTrayIcon;

/// Shows desktop notifications and reports clicks on them. Main thread.
class Notifications : public QObject {
    Q_OBJECT

  public:
    using QObject::QObject;

    /// `item` shows the notifications if the desktop has no notification service. It outlives this object.
    void setItem(QSystemTrayIcon& item);

    /// Shows a notification about the project `domain`, or about none if it is empty. Does not wait for it.
    void show(const QString& title, const QString& text, const QString& domain = {});

  Q_SIGNALS:
    /// The notification about `domain` was clicked; `domain` is empty if it is about no project.
    void clicked(const QString& domain);

  private:
    friend NotificationService;
    void showAtItem(const QString& title, const QString& text, const QString& domain);

    QSystemTrayIcon* m_item = nullptr;
    QString m_domainAtItem; ///< of the last message only: the item does not report which one was clicked
    NotificationService* m_service = nullptr; ///< a child, created for the first notification
};
