#include "Directory/Project.h"

#include "Directory/Json.h"

QString rawValue(ProjectType type) {
    return type == ProjectType::ssh ? QStringLiteral("ssh") : QStringLiteral("harvellon");
}

QString Project::documentFolder() const {
    return type == ProjectType::ssh ? QStringLiteral("web") : QStringLiteral("public/fileadmin");
}

size_t qHash(const Project& project, size_t seed) {
    return qHashMulti(seed, project.domain, project.name.has_value(), project.name.value_or(QString()),
                      project.webspaceID, project.path, rawValue(project.type));
}

QByteArray encodeProject(const Project& project) {
    QList<std::pair<QLatin1StringView, QByteArray>> members{
        {QLatin1StringView("domain"), Json::scalar(project.domain)}};
    if (project.name)
        members.append({QLatin1StringView("name"), Json::scalar(*project.name)});
    members.append({QLatin1StringView("webspace_id"), Json::scalar(project.webspaceID)});
    members.append({QLatin1StringView("ispconfig_webspace"), Json::scalar(project.webspaceID)});
    members.append({QLatin1StringView("path"), Json::scalar(project.path)});
    members.append({QLatin1StringView("type"), Json::scalar(rawValue(project.type))});
    return Json::ordered(members);
}
