#pragma once

#include "Desktop/Panel/Rows/HoverTarget.h"

#include <QKeySequence>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

class AppState;

/// One button of a project's row: what it shows, what it is called, and the keys that do the same.
struct RowButtonFacts {
    Q_GADGET
    QML_VALUE_TYPE(rowButtonFacts)
    Q_PROPERTY(int target READ targetNumber CONSTANT)
    Q_PROPERTY(QString symbol MEMBER symbol CONSTANT)
    Q_PROPERTY(QString help MEMBER help CONSTANT)
    Q_PROPERTY(QString keys READ keyText CONSTANT)

  public:
    HoverTarget target = HoverTarget::connect;
    QString symbol;
    QString help;
    QKeySequence shortcut;

    [[nodiscard]] int targetNumber() const { return static_cast<int>(target); }

    [[nodiscard]] QString keyText() const;
};

/// The row's buttons by their names, and what they do.
class RowButtons : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(RowButtonFacts disconnectButton READ disconnectButton CONSTANT)
    Q_PROPERTY(RowButtonFacts connectButton READ connectButton CONSTANT)
    Q_PROPERTY(RowButtonFacts vscode READ vscode CONSTANT)
    Q_PROPERTY(RowButtonFacts finder READ finder CONSTANT)
    Q_PROPERTY(RowButtonFacts ssh READ ssh CONSTANT)
    Q_PROPERTY(RowButtonFacts cache READ cache CONSTANT)
    Q_PROPERTY(RowButtonFacts safari READ safari CONSTANT)
    Q_PROPERTY(RowButtonFacts database READ database CONSTANT)

  public:
    using QObject::QObject;

    [[nodiscard]] static RowButtonFacts facts(HoverTarget target);

    [[nodiscard]] RowButtonFacts disconnectButton() const { return facts(HoverTarget::disconnect); }

    [[nodiscard]] RowButtonFacts connectButton() const { return facts(HoverTarget::connect); }

    [[nodiscard]] RowButtonFacts vscode() const { return facts(HoverTarget::vscode); }

    [[nodiscard]] RowButtonFacts finder() const { return facts(HoverTarget::finder); }

    [[nodiscard]] RowButtonFacts ssh() const { return facts(HoverTarget::ssh); }

    [[nodiscard]] RowButtonFacts cache() const { return facts(HoverTarget::cache); }

    [[nodiscard]] RowButtonFacts safari() const { return facts(HoverTarget::safari); }

    [[nodiscard]] RowButtonFacts database() const { return facts(HoverTarget::database); }

    /// Does what the button promises. `shift` opens the back end in place of the site.
    static void perform(AppState* state, HoverTarget target, const QString& domain, bool shift);
};

/// Keys as they are printed on a German keyboard, or as the desktop's own signs.
[[nodiscard]] QString keyText(const QKeySequence& keys);
