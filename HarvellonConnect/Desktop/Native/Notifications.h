#pragma once

#include <QObject>
#include <QString>

class NotificationService;
class QSystemTrayIcon;

/// Short messages of the program on the desktop, and the click on one. Main thread.
class Notifications : public QObject {
    Q_OBJECT

  public:
    using QObject::QObject;

    /// `item` shows the messages where the desktop has no service for them; it outlives this.
    void setItem(QSystemTrayIcon& item);

    /// `domain`: the project that the message is about; empty for none.
    void show(const QString& title, const QString& text, const QString& domain = {});

  Q_SIGNALS:
    /// The message about `domain` was clicked.
    void clicked(const QString& domain);

  private:
    friend NotificationService;
    void showAtItem(const QString& title, const QString& text, const QString& domain);

    QSystemTrayIcon* m_item = nullptr;
    QString m_domainAtItem; ///< of the last message there: the item does not tell which one was clicked
    NotificationService* m_service = nullptr; ///< a child, made for the first message
};
