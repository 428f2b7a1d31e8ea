#pragma once

#include "Actions/ProjectActions.h"
#include "State/AppState.h"

#include <QElapsedTimer>
#include <QQuickItem>
#include <QString>
#include <QtQmlIntegration>

#include <optional>

/// The container of a row's buttons. Knows which button is hovered and for which project they act.
class ButtonRail : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(AppState* state MEMBER m_state WRITE setState NOTIFY stateChanged REQUIRED)
    Q_PROPERTY(QString domain MEMBER m_domain WRITE setDomain NOTIFY domainChanged REQUIRED)
    /// Whether Tab reaches the buttons. Only one row of the list is a tab stop.
    Q_PROPERTY(bool current MEMBER m_current NOTIFY currentChanged)
    /// The value of a HoverTarget; -1 for none.
    Q_PROPERTY(int hoveredButton READ hoveredNumber NOTIFY hoveredButtonChanged)

  public:
    using QQuickItem::QQuickItem;

    [[nodiscard]] std::optional<HoverTarget> hoveredButton() const { return m_hovered; }

    [[nodiscard]] int hoveredNumber() const { return m_hovered ? static_cast<int>(*m_hovered) : -1; }

    Q_INVOKABLE void pointer(int target, bool inside);
    void setState(AppState* state);
    /// Also when the row is used for another project.
    void setDomain(const QString& domain);

    /// A click of the pointer. A click on connect right after one on disconnect is ignored: it is the second
    /// one of a double click on "Trennen", whose button the connect button has replaced. So is one on
    /// disconnect while the project has just been mounted: it was meant for the button before it.
    Q_INVOKABLE void click(int target, bool shift);
    Q_INVOKABLE void perform(int target, bool shift);

  Q_SIGNALS:
    void stateChanged();
    void domainChanged();
    void currentChanged();
    void hoveredButtonChanged();

  private:
    AppState* m_state = nullptr;
    QString m_domain;
    bool m_current = false;
    std::optional<HoverTarget> m_hovered;
    QElapsedTimer m_sinceDisconnect;
    QElapsedTimer m_sinceMounted;
};
