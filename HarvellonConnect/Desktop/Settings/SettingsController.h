#pragma once

#include <QObject>
#include <QtQmlIntegration>

/// Signals between the settings view and the window manager that owns it. Outlives the view. Main thread.
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
