#pragma once

#include "Actions/ProjectActions.h"
#include "State/AppState.h"

#include <QObject>
#include <QString>
#include <QtQmlIntegration>

#include <optional>

/// The panel's keyboard: which row is chosen, and what each key does. The cursor stays in the search
/// meanwhile.
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

    /// Chooses the row of a project, whatever the search says. Does nothing for a domain that is not there.
    Q_INVOKABLE void showProject(const QString& domain);
    /// True when the key meant something here.
    Q_INVOKABLE bool press(int key, int modifiers);
    /// Like press(), and text that nobody took goes into the search.
    Q_INVOKABLE bool pressElsewhere(int key, int modifiers, const QString& text);

  Q_SIGNALS:
    void stateChanged();
    void currentRowChanged();
    void typed(const QString& text);
    void rowMoved();
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
    void searchChanged();
    void listChanged();

    AppState* m_state = nullptr;
    int m_row = -1;
    QString m_domain; ///< of the chosen row: it stays chosen when the list is loaded anew
};

/// What Enter does for a row with these offers: the action that has it as its shortcut (connect, or open what
/// is mounted), else the site. Nothing while the row is connecting.
[[nodiscard]] std::optional<HoverTarget> obviousAction(int offers, bool connecting);

/// The row reached from `row` by one of the keys that move; `count` rows, of which `page` are seen at once.
[[nodiscard]] std::optional<int> rowAfter(int key, bool control, int row, int count, int page);
