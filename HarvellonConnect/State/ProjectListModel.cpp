#include "State/ProjectListModel.h"

#include <algorithm>

void ProjectListModel::setProjects(const ProjectList& list) {
    m_projects = list.projects;
    m_projectKeys = list.searchKeys;
    combine();
}

void ProjectListModel::setKept(const QList<Project>& projects) {
    const ProjectList kept = ProjectList::of(projects);
    if (kept.projects == m_kept.projects)
        return;
    m_kept = kept;
    combine();
}

void ProjectListModel::combine() {
    m_rows = m_kept;
    if (m_kept.projects.isEmpty()) {
        m_rows = {m_projects, m_projectKeys};
    } else {
        for (qsizetype i = 0; i < m_projects.size(); ++i) {
            if (isKept(m_projects.at(i).domain))
                continue;
            m_rows.projects.append(m_projects.at(i));
            m_rows.searchKeys.append(m_projectKeys.at(i));
        }
    }
    placeMarked();
    filter();
}

void ProjectListModel::placeMarked() {
    QHash<QString, int> places; // of the marked domains alone, because there are few
    for (const QStringList* domains : {&m_pinned, &m_recent}) {
        for (const QString& domain : *domains)
            places.insert(domain, -1);
    }
    for (int row = 0; !places.isEmpty() && row < m_rows.projects.size(); ++row) {
        const auto place = places.find(m_rows.projects.at(row).domain);
        if (place != places.end() && *place < 0)
            *place = row;
    }
    const auto rowsOf = [&places](const QStringList& domains) {
        QList<int> rows;
        for (const QString& domain : domains) {
            if (const int row = places.value(domain); row >= 0)
                rows.append(row);
        }
        return rows;
    };
    m_pinnedRows = rowsOf(m_pinned);
    m_recentRows = rowsOf(m_recent);
}

void ProjectListModel::setPinned(const QStringList& domains) {
    if (domains == m_pinned)
        return;
    m_pinned = domains;
    placeMarked();
    filter();
}

void ProjectListModel::setRecent(const QStringList& domains) {
    m_recent = domains;
    placeMarked();
}

std::optional<Project> ProjectListModel::pinnedProject(int place) const {
    const int row = m_pinnedRows.value(place - 1, -1);
    return row < 0 ? std::nullopt : std::optional(m_rows.projects.at(row));
}

bool ProjectListModel::isKept(const QString& domain) const {
    return std::any_of(m_kept.projects.begin(), m_kept.projects.end(),
                       [&domain](const Project& project) { return project.domain == domain; });
}

std::optional<Project> ProjectListModel::project(const QString& domain) const {
    const auto found = std::find_if(m_rows.projects.begin(), m_rows.projects.end(),
                                    [&domain](const Project& project) { return project.domain == domain; });
    return found == m_rows.projects.end() ? std::nullopt : std::optional(*found);
}

void ProjectListModel::setSearchText(const QString& text) {
    if (text == m_searchText)
        return;
    m_searchText = text;
    filter();
}

void ProjectListModel::filter() {
    m_query = SearchQuery(m_searchText);
    QList<int> found = matching();
    if (found.isEmpty()) {
        m_query = m_query.forgiving();
        found = matching();
    }
    show(ordered(found));
}

QList<int> ProjectListModel::matching() const {
    QList<int> rows;
    for (int row = 0; row < m_rows.searchKeys.size(); ++row) {
        if (m_query.matches(m_rows.searchKeys.at(row)))
            rows.append(row);
    }
    return rows;
}

QList<int> ProjectListModel::ordered(const QList<int>& matching) {
    const auto end = std::lower_bound(matching.begin(), matching.end(), m_kept.projects.size());
    m_visibleKept = static_cast<int>(end - matching.begin());
    QList<int> first;
    for (const int row : m_query.isEmpty() ? m_pinnedRows : m_recentRows) {
        if (std::binary_search(end, matching.end(), row))
            first.append(row);
    }
    m_visiblePinned = m_query.isEmpty() ? static_cast<int>(first.size()) : 0;
    if (first.isEmpty())
        return matching;
    QList<int> rows = matching.first(m_visibleKept) + first;
    rows.reserve(matching.size());
    std::copy_if(end, matching.end(), std::back_inserter(rows),
                 [&first](int row) { return !first.contains(row); });
    return rows;
}

void ProjectListModel::show(const QList<int>& rows) {
    // Rows that remain are filled anew instead of replaced: making a row costs more than filling it.
    const int before = count();
    const int after = static_cast<int>(rows.size());
    if (after < before) {
        beginRemoveRows({}, after, before - 1);
        m_visible = rows;
        endRemoveRows();
    } else if (after > before) {
        beginInsertRows({}, before, after - 1);
        m_visible = rows;
        endInsertRows();
    } else {
        m_visible = rows;
    }
    if (const int kept = std::min(before, after); kept > 0)
        Q_EMIT dataChanged(index(0), index(kept - 1));
    Q_EMIT countChanged();
}

void ProjectListModel::refreshOffers() {
    if (count() > 0)
        Q_EMIT dataChanged(index(0), index(count() - 1), {offersRole});
}

int ProjectListModel::rowOf(const QString& domain) const {
    for (int row = 0; row < count(); ++row) {
        if (m_rows.projects.at(m_visible.at(row)).domain == domain)
            return row;
    }
    return -1;
}

void ProjectListModel::refreshRow(const QString& domain) {
    if (const int row = rowOf(domain); row >= 0)
        Q_EMIT dataChanged(index(row), index(row));
}

int ProjectListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant ProjectListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Project& project = m_rows.projects.at(m_visible.at(index.row()));
    switch (role) {
    case titleRole:
        return project.title();
    case domainRole:
        return project.domain;
    case connectedRole:
        return m_lookUp(project.domain).connected;
    case connectingRole:
        return m_lookUp(project.domain).connectingSince.has_value();
    case connectingSinceRole:
        return m_lookUp(project.domain).connectingSince.value_or(QDateTime());
    case offersRole:
        return m_lookUp(project.domain).offers;
    case lostRole:
        return m_lookUp(project.domain).lost;
    case keptRole:
        return index.row() < m_visibleKept;
    case pinRole:
        return static_cast<int>(m_pinnedRows.indexOf(m_visible.at(index.row()))) + 1;
    case lastPinRole:
        return m_visiblePinned > 0 && index.row() + 1 == m_visibleKept + m_visiblePinned &&
               index.row() + 1 < count();
    case titleHitsRole:
        return QVariant::fromValue(m_query.hits(project.title()));
    case domainHitsRole:
        return QVariant::fromValue(m_query.hits(project.domain));
    default:
        return {};
    }
}

QHash<int, QByteArray> ProjectListModel::roleNames() const {
    return {{titleRole, "title"},
            {domainRole, "domain"},
            {connectedRole, "connected"},
            {connectingRole, "connecting"},
            {offersRole, "offers"},
            {connectingSinceRole, "connectingSince"},
            {lostRole, "lost"},
            {keptRole, "kept"},
            {pinRole, "pin"},
            {lastPinRole, "lastPin"},
            {titleHitsRole, "titleHits"},
            {domainHitsRole, "domainHits"}};
}
