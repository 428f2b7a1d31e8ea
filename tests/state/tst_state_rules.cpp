#include "State/AccountRules.h"
#include "State/ActivityLog.h"
#include "State/ProjectListModel.h"
#include "State/ProjectOrder.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const std::optional<QString> none;

Project projectAt(const QString& domain, const std::optional<QString>& name = none) {
    return {domain, name, u"1"_s, u"/"_s, ProjectType::ssh};
}

Account accountWith(const char* id, const std::optional<QString>& email) {
    return {QString::fromUtf8(id), email, QString::fromUtf8(id)};
}

QString idsOf(const QList<Account>& accounts) {
    QString ids;
    for (const Account& account : accounts)
        ids += account.id;
    return ids;
}
} // namespace

class TestStateRules : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void logKeepsTheNewest() {
        ActivityLog log;
        const QAbstractItemModelTester tester(&log);
        for (int i = 0; i < 500; ++i)
            log.append(QString::number(i), ActivityLogLevel(i % 4));
        QCOMPARE(log.count(), 120);
        QCOMPARE(log.entries().first().message, u"380"_s);
        QCOMPARE(log.entries().last().message, u"499"_s);
        QCOMPARE(log.data(log.index(119), ActivityLog::symbolRole).toString(), u"xmark.octagon.fill"_s);
        QCOMPARE(log.data(log.index(119), ActivityLog::timeRole).toString().size(), 8);
    }

    void projectsAreSortedAsPeopleDo() {
        QLocale::setDefault(QLocale(QLocale::German));
        Project second = projectAt(u"a.example"_s);
        second.webspaceID = u"2"_s;
        const QList<Project> sorted =
            sortedByDomain({projectAt(u"b.example"_s), projectAt(u"A.example"_s), second,
                            projectAt(u"ä.example"_s), projectAt(u"c.example"_s)});
        QString domains;
        for (const Project& project : sorted)
            domains += project.domain.left(1) + project.webspaceID;
        QCOMPARE(domains, u"A1a2ä1b1c1"_s);
    }

    void search() {
        ProjectListModel model([](const QString&) { return RowState(); });
        const QAbstractItemModelTester tester(&model);
        model.setProjects(ProjectList::of({projectAt(u"www.kornblume.example"_s, u"Bäckerei Kornblume"_s),
                                           projectAt(u"www.s.example"_s, u"Shop in der Straße"_s),
                                           projectAt(u"nackt.example"_s)}));
        const std::vector<std::pair<QString, int>> cases{{u" "_s, 3},
                                                         {u"BACKEREI kornblume"_s, 1},
                                                         {u"example bäckerei"_s, 1},
                                                         {u"shop www"_s, 1},
                                                         {u"nackt"_s, 1},
                                                         {u"STRASSE"_s, 1},
                                                         {u"kornblumewww"_s, 0},
                                                         {u"krnblm bckr"_s, 1},
                                                         {u"ke"_s, 1}, // "nackt.example" need not come along
                                                         {u"shop kornblume"_s, 0}};
        for (const auto& [text, hits] : cases) {
            model.setSearchText(text);
            QVERIFY2(model.count() == hits, qPrintable(text));
        }
    }

    void aRowIsRefreshedAlone() {
        ProjectListModel model([](const QString&) { return RowState(); });
        model.setProjects(ProjectList::of({projectAt(u"a.example"_s), projectAt(u"b.example"_s)}));
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.refreshRow(u"b.example"_s);
        model.refreshRow(u"elsewhere.example"_s);
        QCOMPARE(changed.size(), 1);
        QCOMPARE(changed.at(0).at(0).toModelIndex().row(), 1);
    }

    void accountsAreRecognised() {
        const QList<Account> known{accountWith("1", u"a@x.example"_s), accountWith("2", none),
                                   accountWith("3", u"STRASSE@x.example"_s)};
        QCOMPARE(knownAccount(known, u"2"_s, u"a@x.example"_s)->id, u"2"_s);
        QCOMPARE(knownAccount(known, u"9"_s, u"A@X.example"_s)->id, u"1"_s);
        QCOMPARE(knownAccount(known, u"9"_s, u"strasse@x.example"_s)->id, u"3"_s);
        QCOMPARE(knownAccount(known, u"9"_s, u"straße@x.example"_s), std::nullopt); // somebody else
        QCOMPARE(knownAccount(known, u"9"_s, none), std::nullopt);
        QCOMPARE(knownAccount(known, u"9"_s, QString()), std::nullopt);
    }

    void duplicatesGoAndTheActiveOneStays() {
        const QList<Account> accounts{accountWith("1", u"a@x.example"_s), accountWith("2", none),
                                      accountWith("3", u"A@x.example"_s), accountWith("4", QString()),
                                      accountWith("5", QString())};
        QCOMPARE(idsOf(withoutDuplicates(accounts, u"2"_s)), u"1245"_s);
        QCOMPARE(idsOf(withoutDuplicates(accounts, u"3"_s)), u"2345"_s);
        const QList<Account> alike{accountWith("1", u"a@x.example"_s), accountWith("1", u"a@x.example"_s),
                                   accountWith("2", none), accountWith("2", none)};
        QCOMPARE(idsOf(withoutDuplicates(alike, u"1"_s)), u"12"_s);
        QCOMPARE(idsOf(withoutDuplicates(alike, none)), u"12"_s);
    }
};

QTEST_GUILESS_MAIN(TestStateRules)
#include "tst_state_rules.moc"
