#pragma once

#include "State/ProjectOrder.h"

#include <QAbstractListModel>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QtQmlIntegration>

#include <functional>
#include <optional>

/// What a row shows beside the project itself. Looked up at its owners each time, never cached.
struct RowState {
    bool connected = false;
    std::optional<QDateTime> connectingSince; ///< of a mount that is under way
    int offers = 0;                           ///< the actions that the row offers, by ProjectActions::offers
};

/// The list of projects, the search in it, and the rows that match. Main thread.
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
        offersRole,               ///< "offers": int, a bit for each action that the row offers
    };

    using LookUp = std::function<RowState(const QString& domain)>;

    explicit ProjectListModel(LookUp lookUp, QObject* parent = nullptr)
        : QAbstractListModel(parent), m_lookUp(std::move(lookUp)) {}

    [[nodiscard]] const QList<Project>& projects() const { return m_projects; }

    void setProjects(const ProjectList& list);

    [[nodiscard]] const QString& searchText() const { return m_searchText; }

    void setSearchText(const QString& text);
    /// The row of `domain` shows something else now.
    void refreshRow(const QString& domain);
    /// All rows offer something else now.
    void refreshOffers();

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

    LookUp m_lookUp;
    QList<Project> m_projects;
    QStringList m_keys; ///< the search key of each project
    QList<int> m_visible;
    QString m_searchText;
};
