#pragma once

#include "State/ProjectOrder.h"
#include "State/Rows/SearchQuery.h"

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
    bool lost = false;                        ///< the mount has ended by itself
};

/// The list of projects, the search in it, and the rows that match. Main thread.
///
/// From top to bottom: kept projects, then the pinned ones while nothing is sought or those used last while
/// something is, then the others by domain.
class ProjectListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to AppState")
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(int keptCount READ keptCount NOTIFY countChanged)

  public:
    enum Role {
        titleRole = Qt::UserRole, ///< "title": text, the name or else the domain
        domainRole,               ///< "domain": text
        connectedRole,            ///< "connected": bool
        connectingRole,           ///< "connecting": bool, a mount is under way
        connectingSinceRole,      ///< "connectingSince": date-time; invalid when not connecting
        offersRole,               ///< "offers": int, a bit for each action that the row offers
        lostRole,                 ///< "lost": bool, the mount has ended by itself
        keptRole,                 ///< "kept": bool, mounted, but not in the list of projects
        pinRole,                  ///< "pin": int, the place among the pinned projects from 1; 0 for none
        lastPinRole,              ///< "lastPin": bool, the last row of the block of pinned projects
        titleHitsRole,            ///< "titleHits": list of int, what the search has found in the title
        domainHitsRole,           ///< "domainHits": list of int, as titleHits; see SearchQuery::hits
    };

    using LookUp = std::function<RowState(const QString& domain)>;

    explicit ProjectListModel(LookUp lookUp, QObject* parent = nullptr)
        : QAbstractListModel(parent), m_lookUp(std::move(lookUp)) {}

    [[nodiscard]] const QList<Project>& projects() const { return m_projects; }

    void setProjects(const ProjectList& list);

    /// Projects that have a row above the others, whatever the list holds: what is mounted must stay in
    /// reach.
    void setKept(const QList<Project>& projects);

    [[nodiscard]] bool isKept(const QString& domain) const;

    /// The pinned domains, in the order of their rows. A pinned project that is kept stays where it is.
    void setPinned(const QStringList& domains);
    /// The domains used last, the latest first. Moves no row before the next search.
    void setRecent(const QStringList& domains);

    /// The project at this place, from 1, among the pinned ones that have a row.
    [[nodiscard]] std::optional<Project> pinnedProject(int place) const;

    [[nodiscard]] RowState rowState(const QString& domain) const { return m_lookUp(domain); }

    /// The project of a row, kept or listed.
    [[nodiscard]] std::optional<Project> project(const QString& domain) const;

    /// How many visible rows are kept ones.
    [[nodiscard]] int keptCount() const { return m_visibleKept; }

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
    void combine();
    void placeMarked();
    void filter();
    [[nodiscard]] QList<int> matching() const;
    [[nodiscard]] QList<int> ordered(const QList<int>& matching);
    void show(const QList<int>& rows);

    LookUp m_lookUp;
    QList<Project> m_projects;
    QStringList m_projectKeys; ///< the search key of each project
    ProjectList m_kept;
    ProjectList m_rows; ///< kept ones first, then the others
    QList<int> m_visible;
    int m_visibleKept = 0;
    int m_visiblePinned = 0; ///< in the block below the kept ones
    QString m_searchText;
    SearchQuery m_query;
    QStringList m_pinned;
    QStringList m_recent;
    QList<int> m_pinnedRows; ///< m_pinned in m_rows
    QList<int> m_recentRows; ///< m_recent in m_rows
};
