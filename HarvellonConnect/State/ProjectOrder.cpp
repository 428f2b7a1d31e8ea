#include "State/ProjectOrder.h"

#include "System/CaseFolding.h"

#include <QCollator>
#include <QLocale>

#include <algorithm>
#include <numeric>
#include <vector>

QList<Project> sortedByDomain(const QList<Project>& projects) {
    // In the C locale Qt compares code units. The user interface is German, so sort by German rules then.
    QCollator collator(QLocale().language() == QLocale::C ? QLocale(QLocale::German) : QLocale());
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    // Sort keys are computed once: comparing 10,000 texts pair by pair takes several times as long.
    std::vector<QCollatorSortKey> keys;
    keys.reserve(static_cast<size_t>(projects.size()));
    for (const Project& project : projects)
        keys.push_back(collator.sortKey(project.domain));
    std::vector<size_t> order(keys.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&keys](size_t left, size_t right) { return keys[left] < keys[right]; });
    QList<Project> sorted;
    sorted.reserve(projects.size());
    for (const size_t index : order)
        sorted.append(projects.at(static_cast<qsizetype>(index)));
    return sorted;
}

QString searchKey(const QString& text) {
    const QString decomposed = text.normalized(QString::NormalizationForm_KD);
    QString key;
    key.reserve(decomposed.size());
    for (const QChar character : decomposed) {
        if (character.category() != QChar::Mark_NonSpacing)
            key.append(character);
    }
    return caseFolded(key);
}

ProjectList ProjectList::of(const QList<Project>& projects) {
    ProjectList list;
    list.projects = sortedByDomain(projects);
    list.searchKeys.reserve(projects.size());
    for (const Project& project : std::as_const(list.projects))
        list.searchKeys.append(
            searchKey(project.name.value_or(QString()) + QLatin1Char('\n') + project.domain));
    return list;
}
