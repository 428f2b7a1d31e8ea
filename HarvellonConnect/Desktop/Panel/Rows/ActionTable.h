#pragma once

#include "Actions/ProjectActions.h"

#include <QColor>
#include <QObject>
#include <QVariantList>
#include <QtQmlIntegration>

/// What a row's button shows of its action.
struct ShownAction {
    Q_GADGET
    QML_VALUE_TYPE(shownAction)
    Q_PROPERTY(int target READ target CONSTANT)
    Q_PROPERTY(QString symbol READ symbol CONSTANT)
    Q_PROPERTY(QString help READ help CONSTANT)
    Q_PROPERTY(QString helpWhenLost READ helpWhenLost CONSTANT)
    Q_PROPERTY(QString keys READ keys CONSTANT)
    Q_PROPERTY(QColor tintLight READ tintLight CONSTANT)
    Q_PROPERTY(QColor tintDark READ tintDark CONSTANT)
    Q_PROPERTY(bool dangerous READ dangerous CONSTANT)
    Q_PROPERTY(bool restsWhileConnecting READ restsWhileConnecting CONSTANT)
    Q_PROPERTY(int menuGroup READ menuGroup CONSTANT)
    Q_PROPERTY(int slot READ slot CONSTANT)
    Q_PROPERTY(int slotWhenLost READ slotWhenLost CONSTANT)

  public:
    /// An entry of the table. QML may read a value before it is set, so there is always one.
    const ProjectAction* action = &ProjectActions::table().constFirst();

    [[nodiscard]] int target() const { return action->targetNumber(); }

    [[nodiscard]] QString symbol() const { return action->symbol; }

    [[nodiscard]] QString help() const { return action->help; }

    [[nodiscard]] QString helpWhenLost() const { return action->helpWhenLost; }

    [[nodiscard]] QString keys() const { return keyText(action->shortcut); }

    [[nodiscard]] QColor tintLight() const { return QColor(action->tint.light); }

    [[nodiscard]] QColor tintDark() const { return QColor(action->tint.dark); }

    [[nodiscard]] bool dangerous() const { return action->dangerous; }

    [[nodiscard]] bool restsWhileConnecting() const { return action->restsWhileConnecting; }

    [[nodiscard]] int menuGroup() const { return static_cast<int>(action->menuGroup); }

    [[nodiscard]] int slot() const { return action->slotPosition(); }

    [[nodiscard]] int slotWhenLost() const { return action->slotPosition(true); }
};

/// The table of what can be done with a project, for the views.
class ActionTable : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// Of shownAction: the buttons of a row, from left to right.
    Q_PROPERTY(QVariantList actions READ actions CONSTANT)
    Q_PROPERTY(ShownAction pin READ pin CONSTANT)
    Q_PROPERTY(ShownAction unpin READ unpin CONSTANT)
    Q_PROPERTY(int buttonColumnWidth READ buttonColumnWidth CONSTANT)
    Q_PROPERTY(int railWidth READ railWidth CONSTANT)
    /// Where the buttons of a row stand before anything is known of its project.
    Q_PROPERTY(QVariantList ghostSlots READ ghostSlots CONSTANT)

  public:
    using QObject::QObject;

    [[nodiscard]] QVariantList actions() const;

    [[nodiscard]] ShownAction pin() const { return {&ProjectActions::action(HoverTarget::pin)}; }

    [[nodiscard]] ShownAction unpin() const { return {&ProjectActions::action(HoverTarget::unpin)}; }

    [[nodiscard]] int buttonColumnWidth() const { return ProjectActions::buttonColumnWidth; }

    [[nodiscard]] int railWidth() const { return ProjectActions::railWidth(); }

    [[nodiscard]] QVariantList ghostSlots() const;

    /// The context menu of a row with these offers: of shownAction, from top to bottom.
    Q_INVOKABLE [[nodiscard]] QVariantList menu(int offers) const;

    /// Whether a row with these offers opens its project in an editor.
    Q_INVOKABLE [[nodiscard]] bool opensEditor(int offers) const;

    /// Where the first button of a row with these offers stands, from the left end of the rail.
    Q_INVOKABLE [[nodiscard]] int firstSlot(int offers) const;
};
