#pragma once

#include "State/AppState.h"

#include <QBasicTimer>
#include <QObject>
#include <QQuickItem>
#include <QString>
#include <QtQmlIntegration>

/// What screen readers are told beyond what the controls say of themselves. Main thread.
class PanelSpeech : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(AppState* state READ state WRITE setState NOTIFY stateChanged REQUIRED)
    /// Which project has just been mounted or has ended; empty when that is some seconds ago.
    Q_PROPERTY(QString news READ news NOTIFY newsChanged)

  public:
    using QObject::QObject;

    [[nodiscard]] AppState* state() const { return m_state; }

    void setState(AppState* state);

    [[nodiscard]] QString news() const { return m_news; }

    /// Says that the user is at `item` now, wherever the keyboard's focus is. Null says nothing.
    Q_INVOKABLE void tellFocus(QQuickItem* item);

  Q_SIGNALS:
    void stateChanged();
    void newsChanged();

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    void connectionChanged(const QString& domain, bool connected);
    void setNews(const QString& news);

    AppState* m_state = nullptr;
    QString m_news;
    QBasicTimer m_newsEnd;
};
