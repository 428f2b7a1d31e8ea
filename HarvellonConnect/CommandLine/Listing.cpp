#include "CommandLine/Listing.h"

#include "System/Text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
using State = ListedProject::State;

QString stateText(State state) {
    switch (state) {
    case State::disconnected:
        break;
    case State::connecting:
        return QStringLiteral("Verbindet");
    case State::connected:
        return QStringLiteral("Gemountet");
    case State::lost:
        return QStringLiteral("Unterbrochen");
    }
    return QStringLiteral("Nicht verbunden");
}

QString stateWord(State state) {
    switch (state) {
    case State::disconnected:
        break;
    case State::connecting:
        return QStringLiteral("connecting");
    case State::connected:
        return QStringLiteral("connected");
    case State::lost:
        return QStringLiteral("interrupted");
    }
    return QStringLiteral("disconnected");
}

QJsonValue textOrNull(const QString& text) {
    return text.isEmpty() ? QJsonValue() : QJsonValue(printable(text));
}

QJsonArray arrayOf(const QList<ListedProject>& projects) {
    QJsonArray array;
    for (const ListedProject& project : projects)
        array.append(QJsonObject{{QStringLiteral("domain"), printable(project.domain)},
                                 {QStringLiteral("name"), textOrNull(project.name)},
                                 {QStringLiteral("state"), stateWord(project.state)},
                                 {QStringLiteral("folder"), textOrNull(project.folder)}});
    return array;
}

QString lineOf(const QJsonDocument& document) {
    return QString::fromUtf8(document.toJson(QJsonDocument::Compact)) + QLatin1Char('\n');
}
} // namespace

QString listingOf(const QList<ListedProject>& projects, bool json) {
    if (json)
        return lineOf(QJsonDocument(arrayOf(projects)));
    QString text;
    for (const ListedProject& project : projects)
        text += printable(project.domain) + QLatin1Char('\t') + stateText(project.state) + QLatin1Char('\t') +
                printable(project.name) + QLatin1Char('\n');
    return text;
}

QString statusText(const ProgramStatus& status, bool json) {
    if (json)
        return lineOf(
            QJsonDocument(QJsonObject{{QStringLiteral("version"), status.version},
                                      {QStringLiteral("user"), textOrNull(status.user)},
                                      {QStringLiteral("projects"), static_cast<qint64>(status.projectCount)},
                                      {QStringLiteral("error"), textOrNull(status.problem)},
                                      {QStringLiteral("connections"), arrayOf(status.projects)}}));
    QString text = status.user.isEmpty()
                       ? QStringLiteral("Nicht angemeldet\n")
                       : QStringLiteral("Angemeldet als %1, %2 Projekte\n")
                             .arg(printable(status.user), QString::number(status.projectCount));
    for (const ListedProject& project : status.projects)
        text += printable(project.domain) + QLatin1Char('\t') + stateText(project.state) + QLatin1Char('\t') +
                printable(project.folder) + QLatin1Char('\n');
    if (!status.problem.isEmpty())
        text += QStringLiteral("Letzter Fehler: ") + printable(status.problem) + QLatin1Char('\n');
    return text;
}
