#pragma once

#include "State/ActivityLog.h"

#include <QObject>
#include <QPersistentModelIndex>
#include <QString>
#include <QtQmlIntegration>

/// The selected lines of the activity log: from the line that was chosen first to the current one. They stay
/// selected while newer lines come. Main thread.
class LogSelection : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ActivityLog* log READ log WRITE setLog NOTIFY changed REQUIRED)
    /// Rows of the log; all three are -1 while nothing is selected.
    Q_PROPERTY(int first READ first NOTIFY changed)
    Q_PROPERTY(int last READ last NOTIFY changed)
    Q_PROPERTY(int current READ current NOTIFY changed)

  public:
    using QObject::QObject;

    [[nodiscard]] ActivityLog* log() const { return m_log; }

    void setLog(ActivityLog* log);

    [[nodiscard]] int first() const;
    [[nodiscard]] int last() const;

    [[nodiscard]] int current() const { return rowOf(m_current); }

    /// Selects a row alone, or with `extend` all from the row that was chosen first. The next row inside is
    /// taken for one outside of the log.
    Q_INVOKABLE void choose(int row, bool extend);
    Q_INVOKABLE void chooseAll();
    Q_INVOKABLE void clear();
    /// Handles a key; false when it has no meaning here.
    Q_INVOKABLE bool press(int key, int modifiers);

    /// The selected lines with their times, as people paste them.
    Q_INVOKABLE [[nodiscard]] QString text() const;

  Q_SIGNALS:
    void changed();
    /// Another line has been chosen.
    void chosen();
    void copyRequested(const QString& text);
    void menuRequested();

  private:
    [[nodiscard]] bool isEmpty() const { return !m_anchor.isValid() && !m_current.isValid(); }

    [[nodiscard]] int rowOf(const QPersistentModelIndex& index) const;
    bool move(int key, bool extend);

    ActivityLog* m_log = nullptr;
    QPersistentModelIndex m_anchor; ///< chosen first
    QPersistentModelIndex m_current;
};
