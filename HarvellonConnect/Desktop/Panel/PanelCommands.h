#pragma once

#include <QKeySequence>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

/// What keys of the panel do for the whole program: the one table for the keyboard and for the tips. The keys
/// of a row's actions are in the table of ProjectActions. Ctrl is the command key on macOS.
class PanelCommands : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    // The keys of each command as they are shown, in the desktop's own signs.
    Q_PROPERTY(QString refresh READ refresh CONSTANT)
    Q_PROPERTY(QString fillSearch READ fillSearch CONSTANT)
    Q_PROPERTY(QString clearSearch READ clearSearch CONSTANT)
    Q_PROPERTY(QString settings READ settings CONSTANT)
    Q_PROPERTY(QString updates READ updates CONSTANT)
    Q_PROPERTY(QString quit READ quit CONSTANT)

  public:
    enum class Command { none, refresh, fillSearch, clearSearch, settings, updates, activity, quit, close };

    using QObject::QObject;

    /// What this combination stands for.
    [[nodiscard]] static Command of(const QKeySequence& pressed);
    [[nodiscard]] static QString shownKeys(Command command);

    /// How keys that are not in this table are shown; `portable` names them as QKeySequence does, "Ctrl+C".
    Q_INVOKABLE [[nodiscard]] static QString shown(const QString& portable);

    [[nodiscard]] QString refresh() const { return shownKeys(Command::refresh); }

    [[nodiscard]] QString fillSearch() const { return shownKeys(Command::fillSearch); }

    [[nodiscard]] QString clearSearch() const { return shownKeys(Command::clearSearch); }

    [[nodiscard]] QString settings() const { return shownKeys(Command::settings); }

    [[nodiscard]] QString updates() const { return shownKeys(Command::updates); }

    [[nodiscard]] QString quit() const { return shownKeys(Command::quit); }
};
