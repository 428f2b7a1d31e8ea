#pragma once

#include "Actions/ProjectActions.h"
#include "State/AppState.h"

#include <QObject>
#include <QString>
#include <QtQmlIntegration>

#include <optional>

/// The panel's keyboard: the current row, and what each key does. The text cursor stays in the search field.
class PanelKeys : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(AppState* state READ state WRITE setState NOTIFY stateChanged REQUIRED)
    /// The chosen row of the visible projects; -1 for none.
    Q_PROPERTY(int currentRow READ currentRow WRITE setCurrentRow NOTIFY currentRowChanged)

  public:
    using QObject::QObject;

    [[nodiscard]] AppState* state() const { return m_state; }

    void setState(AppState* state);

    [[nodiscard]] int currentRow() const { return m_row; }

    void setCurrentRow(int row);

    /// Clears the search and makes the row of a project current. A domain that is not listed is searched for,
    /// which tells that it is not there.
    Q_INVOKABLE void showProject(const QString& domain);
    /// Handles a key; false when it has no meaning here.
    Q_INVOKABLE bool press(int key, int modifiers);
    /// Whether a key is a command of the panel. On macOS the program's menu would take such keys first.
    Q_INVOKABLE static bool claims(int key, int modifiers);
    /// Like press(); other printable text is passed on to the search field by typed().
    Q_INVOKABLE bool pressElsewhere(int key, int modifiers, const QString& text);

  Q_SIGNALS:
    void stateChanged();
    void currentRowChanged();
    void typed(const QString& text);
    void rowMoved();
    /// The context menu of the current row is wanted.
    void menuRequested();
    void closeRequested();
    void settingsRequested();
    void updatesRequested();
    void activityRequested();
    void quitRequested();

  private:
    bool pressCommand(int key, Qt::KeyboardModifiers modifiers);
    bool move(int key, Qt::KeyboardModifiers modifiers);
    bool pressAction(int key, Qt::KeyboardModifiers modifiers);
    bool performObvious();
    void performObvious(const QString& domain);
    bool performPinned(int place);
    bool requestMenu();
    void searchChanged();
    void listChanged();

    AppState* m_state = nullptr;
    int m_row = -1;
    QString m_domain; ///< of the current row, which stays current when the list is reloaded
};

/// What Enter does for a row with these offers: the action that has it as its shortcut (connect, or open what
/// is mounted), else the site. Nothing while the row is connecting.
[[nodiscard]] std::optional<HoverTarget> obviousAction(int offers, bool connecting);

/// The row reached from `row` by one of the keys that move; `count` rows, of which `page` are seen at once.
[[nodiscard]] std::optional<int> rowAfter(int key, bool control, int row, int count, int page);
