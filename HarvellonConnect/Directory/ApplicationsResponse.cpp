#include "Directory/ApplicationsResponse.h"

#include "Directory/Json.h"

namespace {
constexpr qsizetype mostProjects = 100'000; // more is a faulty answer: do not allocate memory for it
constexpr qsizetype longestName = 1000;     // a view lays a whole text out before it cuts it short
constexpr QLatin1StringView nameKey("name");
constexpr QLatin1StringView resellerKey("reseller");
constexpr QLatin1StringView coderKey("coder");
constexpr QLatin1StringView databaseKey("allow_database_connect");
constexpr QLatin1StringView userKey("user");
constexpr QLatin1StringView projectsKey("projects");
constexpr QLatin1StringView secondIdentifierKey("ispconfig_webspace");

/// What the server may get wrong without harm.
std::optional<QString> lenientText(const QJsonObject& object, QLatin1StringView key) {
    const QJsonValue value = object.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

QString requiredName(const QJsonObject& object, QLatin1StringView key) {
    return Json::requiredText(object, key).left(longestName);
}

QString normalisedPath(const QString& text) {
    const QString trimmed = text.trimmed();
    return trimmed.startsWith(QLatin1Char('/')) ? trimmed : QLatin1Char('/') + trimmed;
}

Project decodeProject(const QJsonValue& value) {
    const QJsonObject object = Json::object(value, projectsKey);
    Project project;
    project.domain = requiredName(object, QLatin1StringView("domain"));
    project.name = lenientText(object, nameKey);
    if (project.name)
        project.name->truncate(longestName);
    std::optional<qint64> webspace = Json::integer(object.value(QLatin1StringView("webspace_id")));
    if (!webspace)
        webspace = Json::integer(object.value(secondIdentifierKey));
    if (!webspace)
        throw DecodingError(secondIdentifierKey, QStringLiteral("Webspace-ID fehlt"));
    project.webspaceID = QString::number(*webspace);
    project.path = normalisedPath(lenientText(object, QLatin1StringView("path")).value_or(QString()));
    const QString type =
        lenientText(object, QLatin1StringView("type")).value_or(QString()).trimmed().toLower();
    project.type = type == rawValue(ProjectType::ssh) ? ProjectType::ssh : ProjectType::harvellon;
    return project;
}

UserProfile decodeUser(const QJsonValue& value) {
    const QJsonObject object = Json::object(value, userKey);
    return {requiredName(object, nameKey), Json::optionalText(object, resellerKey),
            Json::optionalBoolean(object, coderKey), Json::optionalBoolean(object, databaseKey)};
}

} // namespace

ApplicationsResponse ApplicationsResponse::decode(const QByteArray& json) {
    const QJsonDocument document = Json::parsed(json);
    if (!document.isObject())
        throw DecodingError(QString(), QStringLiteral("Objekt erwartet"));
    const QJsonObject object = document.object();
    ApplicationsResponse response;
    response.user = decodeUser(object.value(userKey));
    const QJsonValue projects = object.value(projectsKey);
    if (!projects.isArray())
        throw DecodingError(projectsKey, QStringLiteral("Liste erwartet"));
    const QJsonArray array = projects.toArray();
    if (array.size() > mostProjects)
        throw DecodingError(projectsKey, QStringLiteral("zu viele"));
    response.projects.reserve(array.size());
    for (const QJsonValue project : array)
        response.projects.append(decodeProject(project));
    return response;
}
