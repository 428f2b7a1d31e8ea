#pragma once

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

class AccountListModel;
class ActivityReport;
class Preferences;
class ProjectListModel;

/// Which projects the user has pinned and used last, for each account; the rows show it for the active one.
/// Main thread.
///
/// Kept in the preferences. What cannot be read there is skipped, and the stored value is set aside under
/// another key. An account's marks go when it leaves the list of accounts, but not when a registry that
/// cannot be read counts as empty at the start.
class ProjectMarks : public QObject {
    Q_OBJECT

  public:
    static constexpr qsizetype mostRecent = 50;

    /// All that is referred to outlives this.
    ProjectMarks(const AccountListModel& accounts, ProjectListModel& rows, Preferences& preferences,
                 ActivityReport& report);

    /// Whether the active account has pinned `domain`.
    [[nodiscard]] bool isPinned(const QString& domain) const;

    /// Whether there is an active account, whose marks can be changed.
    [[nodiscard]] bool canChange() const { return !m_account.isEmpty(); }

    /// Stores the change at once. Does nothing without an active account. New pins come last.
    void setPinned(const QString& domain, bool pinned);
    /// The user has connected or opened the project. Stored at once; nothing without an active account.
    void noteUse(const QString& domain);

  private:
    struct Marks {
        QStringList pinned; ///< in the order in which they were pinned
        QStringList recent; ///< the latest first
    };

    void load();
    void store();
    void accountsChanged();
    void show();

    const AccountListModel& m_accounts;
    ProjectListModel& m_rows;
    Preferences& m_preferences;
    ActivityReport& m_report;
    QString m_account; ///< the active one; empty for none
    QSet<QString> m_known;
    QHash<QString, Marks> m_marks; ///< by the account's id
};
