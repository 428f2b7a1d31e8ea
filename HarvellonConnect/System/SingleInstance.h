#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QString>

/// Sees to it that the program runs once for each user and home folder. Main thread.
class SingleInstance : public QObject {
    Q_OBJECT

  public:
    /// `folder`: where the lock lies; belongs to the user.
    explicit SingleInstance(const QString& folder, QObject* parent = nullptr);

    /// Whether this process is the one. Otherwise the running one has been asked to show itself.
    [[nodiscard]] bool claim();

  Q_SIGNALS:
    /// The program was started once more.
    void startedAgain();

  private:
    QString m_name;
    QLockFile m_lock;
    QLocalServer m_server;
};
