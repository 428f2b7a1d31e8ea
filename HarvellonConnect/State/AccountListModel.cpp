#include "State/AccountListModel.h"

void AccountListModel::set(const QList<Account>& accounts, const std::optional<QString>& activeID) {
    beginResetModel();
    m_accounts = accounts;
    m_activeID = activeID;
    endResetModel();
    Q_EMIT countChanged();
}

int AccountListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant AccountListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Account& account = m_accounts.at(index.row());
    switch (role) {
    case idRole:
        return account.id;
    case displayNameRole:
        return account.displayName;
    case emailRole:
        return account.email.value_or(QString());
    case activeRole:
        return account.id == m_activeID;
    default:
        return {};
    }
}

QHash<int, QByteArray> AccountListModel::roleNames() const {
    return {{idRole, "accountID"},
            {displayNameRole, "displayName"},
            {emailRole, "email"},
            {activeRole, "active"}};
}
