#include "CommandLine/ProjectChoice.h"

#include "Directory/PlainDomain.h"
#include "System/Requests/Request.h"
#include "System/Text.h"

#include <QStringList>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace {
constexpr qsizetype mostNamed = 5;
constexpr qsizetype longestWord = 253;
constexpr qsizetype shortestMistyped = 3; // a shorter one is near to every domain
constexpr qsizetype mostCompared = 5000;  // takes some ten milliseconds

QString withoutWww(const QString& domain) {
    const QString www = QStringLiteral("www.");
    return domain.startsWith(www) ? domain.mid(www.size()) : domain;
}

/// How many characters have to be changed, added or left out to get from one text to the other.
qsizetype distance(const QString& from, const QString& to) {
    std::vector<qsizetype> row(static_cast<size_t>(to.size()) + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const QChar character : from) {
        qsizetype diagonal = row[0]++;
        for (size_t column = 1; column < row.size(); ++column) {
            const bool same = character == to[static_cast<qsizetype>(column) - 1];
            const qsizetype replaced = diagonal + (same ? 0 : 1);
            diagonal = row[column];
            row[column] = std::min({replaced, row[column] + 1, row[column - 1] + 1});
        }
    }
    return row.back();
}

/// The domain that a mistyped word may have meant; empty where none is near. A word may be the beginning of
/// one.
QString nearest(const QList<Project>& projects, const QString& word) {
    QString found;
    if (word.size() < shortestMistyped)
        return found;
    qsizetype best = std::max<qsizetype>(1, word.size() / 4) + 1;
    for (const Project& project : projects.mid(0, mostCompared)) {
        const QString domain = withoutWww(project.domain.toLower());
        for (const QString& part :
             {domain, domain.left(word.size()), domain.section(QLatin1Char('.'), 0, 0)}) {
            if (std::abs(part.size() - word.size()) >= best)
                continue;
            const qsizetype changes = distance(word, part);
            if (changes < best) {
                best = changes;
                found = project.domain;
            }
        }
    }
    return found;
}

[[noreturn]] void refuse(const QString& reason) {
    throw RequestError(ExitStatus::wrongUsage, reason);
}
} // namespace

Project chosenProject(const QList<Project>& projects, const QString& word) {
    const QString wanted = word.left(longestWord).toLower();
    const QString shortened = withoutWww(wanted);
    const Project* named = nullptr;
    QList<const Project*> begun;
    for (const Project& project : projects) {
        const QString domain = project.domain.toLower();
        if (domain == wanted)
            return project;
        if (withoutWww(domain) == wanted)
            named = &project;
        else if (!shortened.isEmpty() && withoutWww(domain).startsWith(shortened))
            begun.append(&project);
    }
    if (named)
        return *named;
    if (begun.size() == 1)
        return *begun.constFirst();
    const QString shown = printable(word.left(longestWord));
    if (begun.isEmpty()) {
        const QString meant = nearest(projects, shortened);
        refuse(QStringLiteral("Kein Projekt heißt %1.").arg(shown) +
               (meant.isEmpty() ? QString() : QStringLiteral(" Gemeint: %1?").arg(printable(meant))));
    }
    QStringList domains;
    for (const Project* project : std::as_const(begun)) {
        const bool isNamed = domains.size() < mostNamed;
        domains.append(isNamed ? printable(project->domain) : QStringLiteral("…"));
        if (!isNamed)
            break;
    }
    refuse(
        QStringLiteral("%1 passt auf mehrere Projekte: %2").arg(shown, domains.join(QStringLiteral(", "))));
}

QString domainInLink(const QString& link) {
    const QString scheme = QStringLiteral("harvellon:");
    if (!link.startsWith(scheme, Qt::CaseInsensitive))
        return {};
    QString rest = link.mid(scheme.size());
    if (rest.startsWith(QLatin1String("//")))
        rest = rest.mid(2);
    const auto end = std::find_if(rest.begin(), rest.end(),
                                  [](QChar character) { return QStringLiteral("/?#").contains(character); });
    const QString domain = rest.left(end - rest.begin());
    return isPlainDomain(domain) ? domain : QString();
}
