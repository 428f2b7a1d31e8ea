#pragma once

#include "Directory/ApplicationsResponse.h"
#include "State/ProjectOrder.h"

#include <QAbstractListModel>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QtQmlIntegration>

#include <optional>

/// The projects that match the search, in the order of the list, with what each row shows. Main thread.
class ProjectListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to AppState")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

  public:
    enum Role {
        titleRole = Qt::UserRole, ///< "title": text, the name or else the domain
        domainRole,               ///< "domain": text
        connectedRole,            ///< "connected": bool
        connectingRole,           ///< "connecting": bool, a mount is under way
        connectingSinceRole,      ///< "connectingSince": date-time; invalid when not connecting
        actionsRole,              ///< "actions": RowActions
    };

    using QAbstractListModel::QAbstractListModel;

    void setProjects(const ProjectList& list);
    void setSearchText(const QString& text);
    void setUser(const std::optional<UserProfile>& user);
    void setConnectedDomains(const QSet<QString>& domains);
    void setConnecting(const QString& domain, bool connecting);

    [[nodiscard]] int count() const { return static_cast<int>(m_visible.size()); }

    /// The row that shows `domain`, or -1.
    Q_INVOKABLE [[nodiscard]] int rowOf(const QString& domain) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  Q_SIGNALS:
    void countChanged();

  private:
    void filter();
    void touch(const QString& domain);

    QList<Project> m_projects;
    QStringList m_keys; ///< the search key of each project
    QList<int> m_visible;
    QString m_searchText;
    std::optional<UserProfile> m_user;
    QSet<QString> m_connected;
    QHash<QString, QDateTime> m_connecting;
};
