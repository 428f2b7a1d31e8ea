#pragma once

#include "State/AppState.h"

#include <QBasicTimer>
#include <QObject>
#include <QQuickItem>
#include <QString>
#include <QtQmlIntegration>

/// Announcements for screen readers beyond what the controls themselves report. Main thread.
class PanelSpeech : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(AppState* state READ state WRITE setState NOTIFY stateChanged REQUIRED)
    /// Says that a project has been mounted or unmounted; empty after a few seconds.
    Q_PROPERTY(QString announcement READ announcement NOTIFY announcementChanged)

  public:
    using QObject::QObject;

    [[nodiscard]] AppState* state() const { return m_state; }

    void setState(AppState* state);

    [[nodiscard]] QString announcement() const { return m_announcement; }

    /// Reports `item` as focused, whichever item has the keyboard focus. Does nothing for null or in an
    /// inactive window.
    Q_INVOKABLE void announceFocus(QQuickItem* item);

  Q_SIGNALS:
    void stateChanged();
    void announcementChanged();

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    void connectionChanged(const QString& domain, bool connected);
    void setAnnouncement(const QString& announcement);

    AppState* m_state = nullptr;
    QString m_announcement;
    QBasicTimer m_clearTimer;
};
