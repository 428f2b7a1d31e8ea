#pragma once

#include "Directory/Account.h"
#include "Directory/Project.h"
#include "State/Diagnosis/DiagnosisText.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>

class AppState;

/// What names the user, the accounts and the projects of this run: also of an account that has been removed
/// meanwhile, because the activity log still tells of it. Main thread.
class NamesInUse : public QObject {
  public:
    /// `state` outlives this.
    explicit NamesInUse(AppState& state);

    /// The domains of all lists that were loaded, and of what is mounted.
    [[nodiscard]] QStringList domains() const;
    /// Everything else that a report must not tell, the tokens included.
    [[nodiscard]] QList<Secret> secrets() const;

  private:
    void remember();
    [[nodiscard]] QList<Project> projects() const;

    AppState& m_state;
    QHash<QString, Account> m_accounts;        ///< by id and name
    QHash<QString, QList<Project>> m_projects; ///< the last list of each account; shared with the state's own
    QSet<QString> m_userNames;
};
