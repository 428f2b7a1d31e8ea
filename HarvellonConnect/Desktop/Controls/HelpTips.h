#pragma once

#include <QBasicTimer>
#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QtQmlIntegration>

/// The one help text that is shown while the pointer rests on a control. Main thread.
class HelpTips : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// The control whose help is shown; null for none.
    Q_PROPERTY(QQuickItem* owner READ owner NOTIFY shownChanged)
    Q_PROPERTY(QString text READ text NOTIFY shownChanged)
    Q_PROPERTY(QString keys READ keys NOTIFY shownChanged)

  public:
    static constexpr int delay = 500; ///< milliseconds

    using QObject::QObject;

    /// The tips of the engine that made `item`.
    [[nodiscard]] static HelpTips* of(const QQuickItem* item);

    void enter(QQuickItem* item, const QString& text, const QString& keys);
    void leave(QQuickItem* item);

    [[nodiscard]] QQuickItem* owner() const { return m_shown ? m_item.data() : nullptr; }

    [[nodiscard]] QString text() const { return m_text; }

    [[nodiscard]] QString keys() const { return m_keys; }

  Q_SIGNALS:
    void shownChanged();

  protected:
    void timerEvent(QTimerEvent* event) override;

  private:
    QPointer<QQuickItem> m_item;
    QString m_text;
    QString m_keys;
    QBasicTimer m_rest;
    bool m_shown = false;
};
