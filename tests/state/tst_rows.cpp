#include "State/AccountListModel.h"
#include "State/ActivityReport.h"
#include "State/ProjectListModel.h"
#include "State/Rows/ProjectMarks.h"
#include "System/Preferences.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
Project projectAt(const QString& domain) {
    return {domain, std::nullopt, u"1"_s, u"/"_s, ProjectType::ssh};
}

/// The first letters of the rows' domains, and the pins' places.
QString shown(const ProjectListModel& model) {
    QString rows;
    for (int row = 0; row < model.count(); ++row) {
        const QModelIndex index = model.index(row);
        rows += index.data(ProjectListModel::domainRole).toString().left(1);
        if (const int pin = index.data(ProjectListModel::pinRole).toInt(); pin > 0)
            rows += QString::number(pin);
        if (index.data(ProjectListModel::lastPinRole).toBool())
            rows += u'|';
    }
    return rows;
}
} // namespace

/// In which order rows stand, what is marked in them, and what is remembered of them.
class TestRows : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    std::unique_ptr<Preferences> m_preferences;
    std::unique_ptr<ActivityReport> m_report;
    AccountListModel m_accounts;
    ProjectListModel m_rows{[](const QString&) { return RowState(); }};
    std::unique_ptr<ProjectMarks> m_marks;

    void start() {
        m_marks.reset();
        m_preferences = std::make_unique<Preferences>(m_folder.filePath(u"preferences.ini"_s));
        m_report = std::make_unique<ActivityReport>(*m_preferences);
        m_marks = std::make_unique<ProjectMarks>(m_accounts, m_rows, *m_preferences, *m_report);
    }

  private Q_SLOTS:

    void pinsAndLatestUseComeFirst() {
        ProjectListModel model([](const QString&) { return RowState(); });
        const QAbstractItemModelTester tester(&model);
        model.setProjects(ProjectList::of({projectAt(u"a.example"_s), projectAt(u"b.example"_s),
                                           projectAt(u"c.example"_s), projectAt(u"d.test"_s)}));
        model.setKept({projectAt(u"k.example"_s)});
        QCOMPARE(shown(model), u"kabcd"_s);
        model.setRecent({u"gone.example"_s, u"d.test"_s, u"c.example"_s, u"k.example"_s});
        QCOMPARE(shown(model), u"kabcd"_s);
        model.setPinned({u"c.example"_s, u"gone.example"_s, u"k.example"_s, u"a.example"_s});
        QCOMPARE(shown(model), u"k2c1a3|bd"_s);
        QCOMPARE(model.pinnedProject(2)->domain, u"k.example"_s);
        QVERIFY(!model.pinnedProject(0) && !model.pinnedProject(4));
        model.setSearchText(u"example"_s);
        QCOMPARE(shown(model), u"k2c1a3b"_s);
        model.setRecent({u"b.example"_s});
        QCOMPARE(shown(model), u"k2c1a3b"_s); // nothing moves under the pointer
        model.setSearchText(u"xmpl"_s);
        QCOMPARE(shown(model), u"k2ba3c1"_s);
    }

    void hitsAreMarked() {
        const std::vector<std::tuple<QString, bool, QString, QString>> cases{
            {u"STRASSE"_s, false, u"Shop in der Straße"_s, u"Shop in der [Straße]"_s},
            {u"backer"_s, false, u"Ba\u0308ckerei"_s, u"[Ba\u0308cker]ei"_s},
            {u"ei e"_s, false, u"Weide See"_s, u"W[ei]d[e] S[ee]"_s},
            {u"shop süd"_s, false, u"Shop"_s, u"[Shop]"_s},
            {u"\U0001D400"_s, false, u"\U0001D400a"_s, u"[\U0001D400a]"_s}, // folds to "a"
            {u"bsp shp"_s, true, u"www.beispiel-shop.test"_s, u"www.[b]ei[sp]iel-[sh]o[p].test"_s},
            {u"bsp"_s, true, u"Spb"_s, u"Spb"_s},
            {u""_s, true, u"Shop"_s, u"Shop"_s}};
        for (const auto& [text, forgiving, line, expected] : cases) {
            const SearchQuery query(text);
            const QList<int> hits = (forgiving ? query.forgiving() : query).hits(line);
            QString marked = line;
            for (qsizetype i = hits.size() - 2; i >= 0; i -= 2)
                marked.insert(hits.at(i) + hits.at(i + 1), u']').insert(hits.at(i), u'[');
            QCOMPARE(marked, expected);
        }
        QVERIFY(SearchQuery(u"bsp shp"_s).forgiving().matches(u"shop\nwww.beispiel.test"_s));
        QVERIFY(!SearchQuery(u"sw"_s).forgiving().matches(u"shop\nw"_s)); // not from line to line
    }

    void marksAreRememberedForEachAccount() {
        const Account erika{u"erika"_s, {}, {}};
        const Account jonas{u"jonas"_s, {}, {}};
        m_rows.setProjects(ProjectList::of({projectAt(u"a.example"_s), projectAt(u"b.example"_s)}));
        start();
        m_marks->setPinned(u"b.example"_s, true); // nobody is signed in
        QCOMPARE(shown(m_rows), u"ab"_s);
        m_accounts.set({erika, jonas}, erika.id);
        m_marks->setPinned(u"b.example"_s, true);
        m_marks->noteUse(u"b.example"_s);
        m_accounts.set({erika, jonas}, jonas.id);
        QCOMPARE(shown(m_rows), u"ab"_s);
        m_marks->setPinned(u"a.example"_s, true);
        QCOMPARE(shown(m_rows), u"a1|b"_s);
        m_marks.reset();
        m_accounts.set({}, {}); // as a registry that cannot be read; only a removal forgets
        start();
        m_accounts.set({erika, jonas}, erika.id);
        QCOMPARE(shown(m_rows), u"b1|a"_s);
        m_rows.setSearchText(u"example"_s);
        QCOMPARE(shown(m_rows), u"b1a"_s);
        m_rows.setSearchText({});
        m_accounts.set({jonas}, jonas.id);
        m_accounts.set({erika, jonas}, erika.id);
        QCOMPARE(shown(m_rows), u"ab"_s);
    }

    void whatCannotBeReadIsSetAside() {
        const std::vector<std::pair<QVariant, QString>> cases{
            {u"[half"_s, u"ab"_s},
            {QStringList{u"x"_s, u"y"_s}, u"ab"_s},
            {QByteArray(R"({"erika": 5, "jonas": {"pinned": ["a.example"]}})"), u"ab"_s},
            {QByteArray(R"({"erika": {"pinned": [null, "b.example", "b.example"]}})"), u"b1|a"_s},
            {QByteArray(R"({"erika": {"pinned": "a.example", "recent": {}}})"), u"ab"_s}};
        for (const auto& [stored, expected] : cases) {
            m_marks.reset();
            m_preferences->set(u"ProjectMarks"_s, stored);
            m_accounts.set({{u"erika"_s, {}, {}}}, u"erika"_s);
            start();
            QCOMPARE(shown(m_rows), expected);
            m_marks->setPinned(u"a.example"_s, true);
            start();
            QVERIFY(shown(m_rows).contains(u"a1"_s) || shown(m_rows).contains(u"a2"_s));
            QCOMPARE(m_preferences->value(u"ProjectMarksUnreadable"_s).toString(), stored.toString());
        }
    }
};

QTEST_GUILESS_MAIN(TestRows)
#include "tst_rows.moc"
