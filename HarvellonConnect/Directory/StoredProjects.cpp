#include "Directory/StoredProjects.h"

#include "Directory/PlainDomain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
constexpr QLatin1StringView domainKey("domain");
constexpr QLatin1StringView nameKey("name");
constexpr QLatin1StringView webspaceKey("webspaceID");
constexpr QLatin1StringView pathKey("path");
constexpr QLatin1StringView sshKey("ssh");

/// The directory sends a whole number, which its decoder writes in exactly one way.
bool isWebspaceID(const QString& text) {
    return text == QString::number(text.toLongLong());
}
} // namespace

QByteArray storedProjects(const QList<Project>& projects) {
    QJsonArray array;
    for (const Project& project : projects)
        array.append(QJsonObject{{domainKey, project.domain},
                                 {nameKey, project.name ? QJsonValue(*project.name) : QJsonValue()},
                                 {webspaceKey, project.webspaceID},
                                 {pathKey, project.path},
                                 {sshKey, project.type == ProjectType::ssh}});
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QList<Project> projectsStoredIn(const QByteArray& json) {
    QList<Project> projects;
    for (const QJsonValue value : QJsonDocument::fromJson(json).array()) {
        Project project;
        project.domain = value[domainKey].toString();
        if (const QJsonValue name = value[nameKey]; name.isString())
            project.name = name.toString();
        project.webspaceID = value[webspaceKey].toString();
        project.path = value[pathKey].toString();
        project.type = value[sshKey].toBool() ? ProjectType::ssh : ProjectType::harvellon;
        if (isPlainDomain(project.domain) && isWebspaceID(project.webspaceID) &&
            project.path.startsWith(QLatin1Char('/')))
            projects.append(project);
    }
    return projects;
}
