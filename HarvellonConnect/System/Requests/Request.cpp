#include "System/Requests/Request.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QList>

namespace {
constexpr int protocolVersion = 1;
const QString versionKey = QStringLiteral("version");
const QString commandKey = QStringLiteral("command");
const QString projectKey = QStringLiteral("project");
const QString textKey = QStringLiteral("text");
const QString targetKey = QStringLiteral("target");
const QString jsonKey = QStringLiteral("json");
const QString statusKey = QStringLiteral("status");
const QString outputKey = QStringLiteral("output");
const QString errorKey = QStringLiteral("error");

// In the order of the enumerations.
const QStringList& commands() {
    static const QStringList words{QStringLiteral("show"),    QStringLiteral("toggle"),
                                   QStringLiteral("list"),    QStringLiteral("status"),
                                   QStringLiteral("connect"), QStringLiteral("disconnect"),
                                   QStringLiteral("open"),    QStringLiteral("search")};
    return words;
}

const QStringList& targets() {
    static const QStringList words{QStringLiteral("editor"), QStringLiteral("files"),
                                   QStringLiteral("site"),   QStringLiteral("admin"),
                                   QStringLiteral("shell"),  QStringLiteral("database")};
    return words;
}

QByteArray lineOf(QJsonObject object) {
    object.insert(versionKey, protocolVersion);
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

[[noreturn]] void refuse() {
    throw RequestError(ExitStatus::wrongUsage, QStringLiteral("Die Anfrage ist nicht zu verstehen."));
}

QString textIn(const QJsonObject& object, const QString& key) {
    const QJsonValue value = object.value(key);
    if (!value.isUndefined() && !value.isString())
        refuse();
    return value.toString();
}

int wordIn(const QJsonObject& object, const QString& key, const QStringList& words) {
    const qsizetype index = words.indexOf(textIn(object, key));
    if (index < 0)
        refuse();
    return static_cast<int>(index);
}
} // namespace

QString wordFor(OpenTarget target) {
    return targets().at(static_cast<int>(target));
}

std::optional<OpenTarget> openTarget(const QString& word) {
    const qsizetype index = targets().indexOf(word);
    return index < 0 ? std::nullopt : std::optional(static_cast<OpenTarget>(index));
}

QByteArray Request::toLine() const {
    QJsonObject object{{commandKey, commands().at(static_cast<int>(command))}};
    if (!project.isEmpty())
        object.insert(projectKey, project);
    if (!text.isEmpty())
        object.insert(textKey, text);
    if (command == Command::open)
        object.insert(targetKey, wordFor(target));
    if (json)
        object.insert(jsonKey, true);
    return lineOf(object);
}

Request Request::parse(const QByteArray& line) {
    if (line.size() > longest)
        refuse();
    const QJsonDocument document = QJsonDocument::fromJson(line);
    if (!document.isObject() || !document.object().value(versionKey).isDouble())
        refuse();
    const QJsonObject object = document.object();
    if (object.value(versionKey).toDouble() != protocolVersion)
        throw RequestError(
            ExitStatus::notReady,
            QStringLiteral("Das laufende Harvellon Connect ist eine andere Version. Bitte neu starten."));
    Request request;
    request.command = static_cast<Command>(wordIn(object, commandKey, commands()));
    request.project = textIn(object, projectKey);
    request.text = textIn(object, textKey);
    if (request.command == Command::open)
        request.target = static_cast<OpenTarget>(wordIn(object, targetKey, targets()));
    request.json = object.value(jsonKey).toBool();
    return request;
}

QByteArray Answer::toLine() const {
    return lineOf({{statusKey, exitStatus}, {outputKey, output}, {errorKey, error}});
}

std::optional<Answer> Answer::parse(const QByteArray& line) {
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    const int none = -1;
    if (!object.value(versionKey).isDouble() || object.value(statusKey).toInt(none) < 0)
        return std::nullopt;
    Answer answer{object.value(statusKey).toInt(), object.value(outputKey).toString(),
                  object.value(errorKey).toString()};
    if (object.value(versionKey).toDouble() != protocolVersion)
        answer.exitStatus = ExitStatus::notReady;
    return answer;
}
