#pragma once

#include <QObject>
#include <QString>
#include <QtQmlIntegration>

/// What the panel's view and its owner say to each other. The owner outlives the view. Main thread.
class PanelController : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to StatusBarController")
    /// A popover draws its own rounded corners; an ordinary window has a frame instead.
    Q_PROPERTY(bool rounded READ rounded NOTIFY roundedChanged)

  public:
    using QObject::QObject;

    [[nodiscard]] bool rounded() const { return m_rounded; }

    void setRounded(bool rounded);

  Q_SIGNALS:
    void roundedChanged();

    // From the owner to the view.

    /// The hidden panel is about to be shown.
    void opened();
    /// The row of the project `domain` is to be selected, or told that there is none.
    void projectChosen(const QString& domain);

    // From the view to the owner; the view calls them as methods.

    void closeRequested();
    void settingsRequested();
    void updatesRequested();
    void quitRequested();

  private:
    bool m_rounded = true;
};
