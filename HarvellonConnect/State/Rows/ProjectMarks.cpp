#include "State/Rows/ProjectMarks.h"

#include "State/AccountListModel.h"
#include "State/ActivityReport.h"
#include "State/ProjectListModel.h"
#include "System/Preferences.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
const QString marksKey = QStringLiteral("ProjectMarks");
const QString unreadableKey = QStringLiteral("ProjectMarksUnreadable");
const QString pinnedMember = QStringLiteral("pinned");
const QString recentMember = QStringLiteral("recent");

/// The texts of a list, each once. `sound` turns false where something else was found.
QStringList textsOf(const QJsonValue& value, bool& sound) {
    sound = sound && (value.isArray() || value.isUndefined());
    QStringList texts;
    const QJsonArray array = value.toArray();
    for (const QJsonValue text : array) {
        sound = sound && text.isString();
        if (text.isString())
            texts.append(text.toString());
    }
    texts.removeDuplicates();
    return texts;
}
} // namespace

ProjectMarks::ProjectMarks(const AccountListModel& accounts, ProjectListModel& rows, Preferences& preferences,
                           ActivityReport& report)
    : m_accounts(accounts), m_rows(rows), m_preferences(preferences), m_report(report) {
    load();
    connect(&accounts, &AccountListModel::countChanged, this, &ProjectMarks::accountsChanged);
    accountsChanged();
}

bool ProjectMarks::isPinned(const QString& domain) const {
    const auto marks = m_marks.constFind(m_account);
    return marks != m_marks.constEnd() && marks->pinned.contains(domain);
}

void ProjectMarks::setPinned(const QString& domain, bool pinned) {
    if (!canChange() || pinned == isPinned(domain))
        return;
    QStringList& pins = m_marks[m_account].pinned;
    if (pinned)
        pins.append(domain);
    else
        pins.removeAll(domain);
    store();
    show();
}

void ProjectMarks::noteUse(const QString& domain) {
    if (!canChange())
        return;
    QStringList& recent = m_marks[m_account].recent;
    if (recent.value(0) == domain)
        return;
    recent.removeAll(domain);
    recent.prepend(domain);
    recent = recent.mid(0, mostRecent);
    store();
    show();
}

void ProjectMarks::load() {
    const QVariant stored = m_preferences.value(marksKey);
    if (!stored.isValid())
        return;
    const QJsonDocument document =
        QJsonDocument::fromJson(m_preferences.data(marksKey).value_or(QByteArray()));
    bool sound = document.isObject();
    const QJsonObject accounts = document.object();
    for (auto account = accounts.begin(); account != accounts.end(); ++account) {
        const QJsonObject marks = account.value().toObject();
        sound = sound && account.value().isObject();
        m_marks.insert(account.key(), {textsOf(marks.value(pinnedMember), sound),
                                       textsOf(marks.value(recentMember), sound).mid(0, mostRecent)});
    }
    if (!sound && m_preferences.value(unreadableKey) != stored)
        m_preferences.set(unreadableKey, stored);
}

void ProjectMarks::store() {
    QJsonObject accounts;
    for (auto marks = m_marks.cbegin(); marks != m_marks.cend(); ++marks)
        accounts.insert(marks.key(), QJsonObject{{pinnedMember, QJsonArray::fromStringList(marks->pinned)},
                                                 {recentMember, QJsonArray::fromStringList(marks->recent)}});
    m_report.remember(marksKey, QJsonDocument(accounts).toJson(QJsonDocument::Compact));
}

void ProjectMarks::accountsChanged() {
    QSet<QString> known;
    for (const Account& account : m_accounts.accounts())
        known.insert(account.id);
    bool forgotten = false;
    for (const QString& removed : std::as_const(m_known -= known))
        forgotten = m_marks.remove(removed) || forgotten;
    m_known = known;
    if (forgotten)
        store();
    const QString active = m_accounts.activeID().value_or(QString());
    if (active == m_account)
        return;
    m_account = active;
    show();
    m_rows.refreshOffers();
}

void ProjectMarks::show() {
    const Marks marks = m_marks.value(m_account);
    m_rows.setRecent(marks.recent);
    m_rows.setPinned(marks.pinned);
}
