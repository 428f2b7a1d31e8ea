#pragma once

#include <QBasicTimer>
#include <QDateTime>
#include <QObject>
#include <QtQmlIntegration>

/// The duration of a connect in progress, as text that is updated each second while `running`.
class ConnectingTime : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QDateTime since READ since WRITE setSince NOTIFY textChanged)
    Q_PROPERTY(bool running READ running WRITE setRunning NOTIFY runningChanged)
    Q_PROPERTY(QString text READ text NOTIFY textChanged)

  public:
    using QObject::QObject;

    [[nodiscard]] QDateTime since() const { return m_since; }

    void setSince(const QDateTime& since);

    [[nodiscard]] bool running() const { return m_tick.isActive(); }

    void setRunning(bool running);
    [[nodiscard]] QString text() const;

  Q_SIGNALS:
    void textChanged();
    void runningChanged();

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    QDateTime m_since;
    QBasicTimer m_tick;
};

/// "Verbinde ... 7 s"; a clock that was set back counts as no time.
[[nodiscard]] QString connectingText(const QDateTime& since, const QDateTime& now);
