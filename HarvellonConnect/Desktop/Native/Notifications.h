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
    /// The first one may make the desktop ask the user for permission.
    void show(const QString& title, const QString& text, const QString& domain = {});

    /// Asks the desktop, where the user can forbid notifications, whether that has happened. Asks nothing of
    /// the user.
    void look();

  Q_SIGNALS:
    /// The user has forbidden notifications, or the desktop does not take them. `untold` is what was to be
    /// said; empty after look().
    void refused(const QString& untold);
    void allowed();
    /// The notification about `domain` was clicked; `domain` is empty if it is about no project.
    void clicked(const QString& domain);

  private:
    friend NotificationService;
    void prepare();
    void showAtItem(const QString& title, const QString& text, const QString& domain);
    void answered(bool shown, const QString& title, const QString& text);

    QSystemTrayIcon* m_item = nullptr;
    QString m_domainAtItem; ///< of the last message only: the item does not report which one was clicked
    NotificationService* m_service = nullptr; ///< a child; null where there is none
};
