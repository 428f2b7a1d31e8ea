#include "Desktop/Panel/Rows/RowButtons.h"

#include "State/AppState.h"

QString keyText(const QKeySequence& keys) {
    QString text = keys.toString(QKeySequence::NativeText);
    text.replace(QStringLiteral("Ctrl"), QStringLiteral("Strg"));
    text.replace(QStringLiteral("Shift"), QStringLiteral("Umschalt"));
    text.replace(QStringLiteral("Return"), QStringLiteral("Eingabe"));
    return text;
}

QString RowButtonFacts::keyText() const {
    return ::keyText(shortcut);
}

RowButtonFacts RowButtons::facts(HoverTarget target) {
    switch (target) {
    case HoverTarget::connect:
        return {target, QStringLiteral("bolt.horizontal.circle"), QStringLiteral("Verbinden und mounten"),
                QKeySequence(Qt::Key_Return)};
    case HoverTarget::disconnect:
        return {target, QStringLiteral("xmark.circle"), QStringLiteral("Trennen"),
                QKeySequence(Qt::CTRL | Qt::Key_T)};
    case HoverTarget::vscode:
        return {target, QStringLiteral("chevron.left.slash.chevron.right"),
                QStringLiteral("In VS Code oeffnen"), QKeySequence(Qt::Key_Return)};
    case HoverTarget::finder:
        return {target, QStringLiteral("folder"), QStringLiteral("Im Finder oeffnen"),
                QKeySequence(Qt::CTRL | Qt::Key_O)};
    case HoverTarget::ssh:
        return {target, QStringLiteral("terminal"), QStringLiteral("SSH-Shell"),
                QKeySequence(Qt::CTRL | Qt::Key_S)};
    case HoverTarget::database:
        return {target, QStringLiteral("cylinder.split.1x2"),
                QStringLiteral("Datenbank in Sequel Ace oeffnen"), QKeySequence(Qt::CTRL | Qt::Key_D)};
    case HoverTarget::cache:
        return {target, QStringLiteral("bolt.circle"), QStringLiteral("Cache leeren"),
                QKeySequence(Qt::CTRL | Qt::Key_L)};
    case HoverTarget::safari:
        return {target, QStringLiteral("safari"), QStringLiteral("Seite oeffnen (Shift: /admin)"),
                QKeySequence(Qt::CTRL | Qt::Key_Return)};
    }
    Q_UNREACHABLE();
}

void RowButtons::perform(AppState* state, HoverTarget target, const QString& domain, bool shift) {
    switch (target) {
    case HoverTarget::connect:
        return state->startConnect(domain);
    case HoverTarget::disconnect:
        return state->startDisconnect(domain);
    case HoverTarget::vscode:
        return state->startOpenInVSCode(domain);
    case HoverTarget::finder:
        return state->startOpenInFinder(domain);
    case HoverTarget::ssh:
        return state->startOpenShell(domain);
    case HoverTarget::database:
        return state->startOpenDatabase(domain);
    case HoverTarget::cache:
        return state->startClearCache(domain);
    case HoverTarget::safari:
        return state->startOpenSite(domain, shift);
    }
}
