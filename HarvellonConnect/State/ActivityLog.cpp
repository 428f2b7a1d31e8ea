#include "State/ActivityLog.h"

namespace {
QString symbolOf(ActivityLogLevel level) {
    switch (level) {
    case ActivityLogLevel::info:
        return QStringLiteral("info.circle");
    case ActivityLogLevel::success:
        return QStringLiteral("checkmark.circle.fill");
    case ActivityLogLevel::warning:
        return QStringLiteral("exclamationmark.triangle.fill");
    case ActivityLogLevel::error:
        return QStringLiteral("xmark.octagon.fill");
    }
    Q_UNREACHABLE();
}
} // namespace

void ActivityLog::append(const QString& message, ActivityLogLevel level) {
    beginInsertRows({}, count(), count());
    m_entries.append({QUuid::createUuid(), QDateTime::currentDateTime(), level, message});
    endInsertRows();
    if (const qsizetype surplus = m_entries.size() - capacity; surplus > 0) {
        beginRemoveRows({}, 0, static_cast<int>(surplus) - 1);
        m_entries.remove(0, surplus);
        endRemoveRows();
    }
    Q_EMIT countChanged();
}

void ActivityLog::clear() {
    beginResetModel();
    m_entries.clear();
    endResetModel();
    Q_EMIT countChanged();
}

QString ActivityLog::lastLine() const {
    // A command's output may be long, and more than this is never seen.
    return m_entries.isEmpty() ? QString() : m_entries.last().message.left(300).simplified();
}

int ActivityLog::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant ActivityLog::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ActivityLogEntry& entry = m_entries.at(index.row());
    switch (role) {
    case timeRole:
        return entry.timestamp.toString(QStringLiteral("HH:mm:ss"));
    case symbolRole:
        return symbolOf(entry.level);
    case levelRole:
        return static_cast<int>(entry.level);
    case messageRole:
        return entry.message;
    default:
        return {};
    }
}

QHash<int, QByteArray> ActivityLog::roleNames() const {
    return {{timeRole, "time"}, {symbolRole, "symbol"}, {levelRole, "level"}, {messageRole, "message"}};
}
