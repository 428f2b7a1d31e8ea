#pragma once

#include "Actions/ProjectActions.h"

#include <QObject>
#include <QVariantList>
#include <QtQmlIntegration>
#include <qqml.h>

struct ProjectActionType {
    Q_GADGET
    QML_FOREIGN(ProjectAction)
    QML_VALUE_TYPE(projectAction)
};

/// The table of what can be done with a project, for the views.
class ActionTable : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// Of projectAction, from left to right.
    Q_PROPERTY(QVariantList actions READ actions CONSTANT)
    Q_PROPERTY(int buttonColumnWidth READ buttonColumnWidth CONSTANT)
    Q_PROPERTY(int railWidth READ railWidth CONSTANT)
    /// Where the buttons of a row stand before anything is known of its project.
    Q_PROPERTY(QVariantList ghostSlots READ ghostSlots CONSTANT)

  public:
    using QObject::QObject;

    [[nodiscard]] QVariantList actions() const;

    [[nodiscard]] int buttonColumnWidth() const { return ProjectActions::buttonColumnWidth; }

    [[nodiscard]] int railWidth() const { return ProjectActions::railWidth(); }

    [[nodiscard]] QVariantList ghostSlots() const;

    /// Where the first button of a row with these offers stands, from the left end of the rail.
    Q_INVOKABLE [[nodiscard]] int firstSlot(int offers) const;
};
