#include "State/AccountRules.h"
#include "State/ActivityLog.h"
#include "State/ProjectListModel.h"
#include "State/ProjectOrder.h"
#include "State/RowActions.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

namespace {
const std::optional<QString> none;

Project projectAt(const QString& domain, const std::optional<QString>& name = none) {
    return {domain, name, QStringLiteral("1"), QStringLiteral("/"), ProjectType::ssh};
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
        QCOMPARE(log.entries().first().message, QStringLiteral("380"));
        QCOMPARE(log.entries().last().message, QStringLiteral("499"));
        const QModelIndex last = log.index(119);
        QCOMPARE(log.data(last, ActivityLog::symbolRole).toString(), QStringLiteral("xmark.octagon.fill"));
        QCOMPARE(log.data(last, ActivityLog::timeRole).toString().size(), 8);
        log.clear();
        QCOMPARE(log.count(), 0);
    }

    void projectsAreSortedAsPeopleDo() {
        QLocale::setDefault(QLocale(QLocale::German));
        Project second = projectAt(QStringLiteral("a.example"));
        second.webspaceID = QStringLiteral("2");
        const QList<Project> sorted = sortedByDomain(
            {projectAt(QStringLiteral("b.example")), projectAt(QStringLiteral("A.example")), second,
             projectAt(QStringLiteral("ä.example")), projectAt(QStringLiteral("c.example"))});
        QStringList domains;
        for (const Project& project : sorted)
            domains.append(project.domain + project.webspaceID);
        QCOMPARE(domains, (QStringList{QStringLiteral("A.example1"), QStringLiteral("a.example2"),
                                       QStringLiteral("ä.example1"), QStringLiteral("b.example1"),
                                       QStringLiteral("c.example1")}));
    }

    void search_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("hits");
        QTest::newRow("nothing asked") << " " << 3;
        QTest::newRow("case and diacritics") << "BACKEREI kornblume" << 1;
        QTest::newRow("words in any order") << "example bäckerei" << 1;
        QTest::newRow("name and domain") << "shop www" << 1;
        QTest::newRow("no name") << "nackt" << 1;
        QTest::newRow("sharp s") << "STRASSE" << 1;
        QTest::newRow("across the border of name and domain") << "kornblumewww" << 0;
        QTest::newRow("one word misses") << "shop kornblume" << 0;
    }

    void search() {
        QFETCH(QString, text);
        QFETCH(int, hits);
        ProjectListModel model;
        const QAbstractItemModelTester tester(&model);
        model.setProjects(ProjectList::of(
            {projectAt(QStringLiteral("www.kornblume.example"), QStringLiteral("Bäckerei Kornblume")),
             projectAt(QStringLiteral("www.s.example"), QStringLiteral("Shop in der Straße")),
             projectAt(QStringLiteral("nackt.example"))}));
        model.setSearchText(text);
        QCOMPARE(model.count(), hits);
    }

    void rowsTellWhatChanges() {
        ProjectListModel model;
        model.setProjects(ProjectList::of(
            {projectAt(QStringLiteral("a.example")), projectAt(QStringLiteral("b.example"))}));
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setConnecting(QStringLiteral("b.example"), true);
        QVERIFY(model.data(model.index(1), ProjectListModel::connectingSinceRole).toDateTime().isValid());
        model.setConnecting(QStringLiteral("b.example"), false);
        model.setConnectedDomains({QStringLiteral("b.example")});
        QCOMPARE(changed.size(), 3);
        QCOMPARE(changed.at(2).at(0).toModelIndex().row(), 1);
        QVERIFY(model.data(model.index(1), ProjectListModel::connectedRole).toBool());
        model.setSearchText(QStringLiteral("b.ex"));
        QCOMPARE(model.rowOf(QStringLiteral("b.example")), 0);
        QCOMPARE(model.rowOf(QStringLiteral("a.example")), -1);
    }

    void accountsAreRecognised() {
        const QList<Account> known{accountWith("1", QStringLiteral("a@x.example")), accountWith("2", none),
                                   accountWith("3", QStringLiteral("STRASSE@x.example"))};
        QCOMPARE(knownAccount(known, QStringLiteral("2"), QStringLiteral("a@x.example"))->id,
                 QStringLiteral("2"));
        QCOMPARE(knownAccount(known, QStringLiteral("9"), QStringLiteral("A@X.example"))->id,
                 QStringLiteral("1"));
        QCOMPARE(knownAccount(known, QStringLiteral("9"), QStringLiteral("straße@x.example"))->id,
                 QStringLiteral("3"));
        QCOMPARE(knownAccount(known, QStringLiteral("9"), none), std::nullopt);
        QCOMPARE(knownAccount(known, QStringLiteral("9"), QString()), std::nullopt);
    }

    void duplicatesGoAndTheActiveOneStays() {
        const QList<Account> accounts{accountWith("1", QStringLiteral("a@x.example")), accountWith("2", none),
                                      accountWith("3", QStringLiteral("A@x.example")),
                                      accountWith("4", QString()), accountWith("5", QString())};
        QCOMPARE(idsOf(withoutDuplicates(accounts, QStringLiteral("2"))), QStringLiteral("1245"));
        QCOMPARE(idsOf(withoutDuplicates(accounts, QStringLiteral("3"))), QStringLiteral("2345"));
    }
};

QTEST_GUILESS_MAIN(TestStateRules)
#include "tst_state_rules.moc"
