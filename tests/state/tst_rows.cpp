#include "State/Rows/SearchQuery.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// What is marked in rows.
class TestRows : public QObject {
    Q_OBJECT

  private Q_SLOTS:

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
};

QTEST_GUILESS_MAIN(TestRows)
#include "tst_rows.moc"
