#pragma once

#include <QObject>
#include <QtQmlIntegration>

/// What the settings view and its owner say to each other. The owner outlives the view. Main thread.
class SettingsController : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to SettingsWindowManager")

  public:
    using QObject::QObject;

  Q_SIGNALS:
    /// From the owner to the view: the hidden window is about to be shown.
    void opened();
    /// From the view to the owner; the view calls it as a method.
    void closeRequested();
};
