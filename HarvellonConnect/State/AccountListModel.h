#pragma once

#include "Directory/Account.h"

#include <QAbstractListModel>
#include <QtQmlIntegration>

#include <optional>

/// The known accounts in the order in which they were added. Main thread.
class AccountListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to AppState")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

  public:
    enum Role {
        idRole = Qt::UserRole, ///< "accountID": text
        displayNameRole,       ///< "displayName": text
        emailRole,             ///< "email": text, empty when unknown
        activeRole,            ///< "active": bool
    };

    using QAbstractListModel::QAbstractListModel;

    void set(const QList<Account>& accounts, const std::optional<QString>& activeID);

    [[nodiscard]] const QList<Account>& accounts() const { return m_accounts; }

    [[nodiscard]] const std::optional<QString>& activeID() const { return m_activeID; }

    [[nodiscard]] int count() const { return static_cast<int>(m_accounts.size()); }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  Q_SIGNALS:
    void countChanged();

  private:
    QList<Account> m_accounts;
    std::optional<QString> m_activeID;
};
