#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Turns SIGTERM, SIGINT and SIGHUP into a call on the main thread. One object for each process.
class TerminationSignals : public QObject {
    Q_OBJECT

  public:
    explicit TerminationSignals(QObject* parent = nullptr);

  Q_SIGNALS:
    void received();

  private:
    QSocketNotifier m_notifier;
};
