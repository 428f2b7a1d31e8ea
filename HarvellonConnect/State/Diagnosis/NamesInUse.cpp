#include "State/Diagnosis/NamesInUse.h"

#include "State/AppState.h"

#include <QFileInfo>
#include <QSysInfo>

namespace {
/// The name, and its parts, which logs may tell alone.
void addName(QList<Secret>& secrets, const QString& name) {
    constexpr qsizetype shortestPart = 3;
    secrets.append({QStringLiteral("name"), name});
    for (const QString& part : name.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (part.size() >= shortestPart)
            secrets.append({QStringLiteral("name"), part});
    }
}

void addMail(QList<Secret>& secrets, const QString& mail) {
    secrets.append({QStringLiteral("mail"), mail});
    secrets.append({QStringLiteral("mail"), mail.section(QLatin1Char('@'), 0, 0)});
    secrets.append({QStringLiteral("server"), mail.section(QLatin1Char('@'), 1)});
}
} // namespace

NamesInUse::NamesInUse(AppState& state) : m_state(state) {
    const AccountListModel* const accounts = state.accountList();
    connect(accounts, &QAbstractItemModel::rowsInserted, this, &NamesInUse::remember);
    connect(accounts, &QAbstractItemModel::dataChanged, this, &NamesInUse::remember);
    connect(accounts, &QAbstractItemModel::modelReset, this, &NamesInUse::remember);
    connect(&state, &AppState::projectsChanged, this, &NamesInUse::remember);
    connect(&state, &AppState::userProfileChanged, this, &NamesInUse::remember);
}

void NamesInUse::remember() {
    for (const Account& account : m_state.accounts()) // a later sign-in may bring another name
        m_accounts.insert(account.id + QLatin1Char('\n') + account.displayName, account);
    const QList<Project>& projects = m_state.projects();
    if (!projects.isEmpty()) // a load that fails empties the list
        m_projects.insert(m_state.activeAccountID().value_or(QString()), projects);
    m_userNames.insert(m_state.userName());
}

QList<Project> NamesInUse::projects() const {
    QList<Project> all;
    for (const QList<Project>& list : m_projects)
        all += list;
    return all + m_state.parts().connections.keptProjects();
}

QStringList NamesInUse::domains() const {
    QStringList domains;
    for (const Project& project : projects())
        domains.append(project.domain);
    return domains;
}

QList<Secret> NamesInUse::secrets() const {
    QList<Secret> secrets;
    const OAuthManager& oauth = m_state.parts().oauth;
    secrets.append({QStringLiteral("geheim"), oauth.accessToken().value_or(QString())});
    secrets.append({QStringLiteral("geheim"), oauth.refreshToken().value_or(QString())});
    for (const Account& account : m_accounts) {
        secrets.append({QStringLiteral("account"), account.id});
        addName(secrets, account.displayName);
        addMail(secrets, account.email.value_or(QString()));
    }
    for (const QString& name : m_userNames)
        addName(secrets, name);
    secrets.append({QStringLiteral("benutzer"), QFileInfo(m_state.host().homeFolder).fileName()});
    secrets.append({QStringLiteral("benutzer"), qEnvironmentVariable("USER")});
    secrets.append({QStringLiteral("rechner"), QSysInfo::machineHostName()});
    for (const Project& project : projects()) {
        secrets.append({QStringLiteral("projektname"), project.name.value_or(QString())});
        secrets.append({QStringLiteral("ssh-benutzer"), project.sshUser()});
        secrets.append({QStringLiteral("pfad"), project.path});
    }
    return secrets;
}
