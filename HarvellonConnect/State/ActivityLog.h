#pragma once

#include "System/Reporter.h"

#include <QAbstractListModel>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUuid>
#include <QtQmlIntegration>

/// One line of the activity log.
struct ActivityLogEntry {
    QUuid id;
    QDateTime timestamp; ///< wall clock
    ActivityLogLevel level = ActivityLogLevel::info;
    QString message;
};

/// The newest 120 entries, oldest first; nothing is kept between runs. Main thread.
class ActivityLog : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to AppState")
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    /// Of the newest entry; countChanged is emitted with each one, also when the log is full.
    Q_PROPERTY(QString lastLine READ lastLine NOTIFY countChanged)
    /// The value of ActivityLogLevel.
    Q_PROPERTY(int lastLevel READ lastLevel NOTIFY countChanged)

  public:
    static constexpr qsizetype capacity = 120;

    enum Role {
        timeRole = Qt::UserRole, ///< "time": text, HH:mm:ss
        symbolRole,              ///< "symbol": name of the level's symbol
        levelRole,               ///< "level": int, the value of ActivityLogLevel
        messageRole,             ///< "message": plain text
    };

    using QAbstractListModel::QAbstractListModel;

    void append(const QString& message, ActivityLogLevel level);
    Q_INVOKABLE void clear();

    [[nodiscard]] const QList<ActivityLogEntry>& entries() const { return m_entries; }

    /// The beginning of the newest message in one line; empty while there is none.
    [[nodiscard]] QString lastLine() const;

    [[nodiscard]] int lastLevel() const {
        return m_entries.isEmpty() ? 0 : static_cast<int>(m_entries.last().level);
    }

    [[nodiscard]] int count() const { return static_cast<int>(m_entries.size()); }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  Q_SIGNALS:
    void countChanged();

  private:
    QList<ActivityLogEntry> m_entries;
};
