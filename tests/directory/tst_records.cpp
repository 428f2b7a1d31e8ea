#include "Directory/Account.h"
#include "Directory/ApplicationsResponse.h"
#include "Directory/DecodingError.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {
/// JSON in C++ is easier to read with single quotes.
QByteArray json(const char* text) {
    return QByteArray(text).replace('\'', '"');
}

QByteArray answerWith(const QByteArray& project) {
    return json("{'user':{'name':'Erika'},'projects':[") + project + "]}";
}

Project decoded(const QByteArray& project) {
    return ApplicationsResponse::decode(answerWith(project)).projects.value(0);
}

const std::optional<QString> none;
} // namespace

Q_DECLARE_METATYPE(Project)

class TestRecords : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void projects_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<Project>("project");
        const auto row = [](const char* name, const char* members, const Project& project) {
            QTest::newRow(name) << json("{'domain':'d.example',") + json(members) + '}' << project;
        };
        const auto plain = [](const QString& webspace, const QString& path = u"/"_s) {
            return Project{u"d.example"_s, none, webspace, path, ProjectType::harvellon};
        };
        row("least", "'webspace_id':12", plain(u"12"_s));
        row("trimmed and lowered", "'ispconfig_webspace':7,'path':'  web ','type':' SSH\\n','name':'N'",
            {u"d.example"_s, u"N"_s, u"7"_s, u"/web"_s, ProjectType::ssh});
        row("first identifier wins", "'webspace_id':1,'ispconfig_webspace':2", plain(u"1"_s));
        row("fraction falls to the second", "'webspace_id':1.5,'ispconfig_webspace':9", plain(u"9"_s));
        row("beyond doubles", "'webspace_id':9007199254740993", plain(u"9007199254740993"_s));
        row("ill-typed trifles", "'webspace_id':1,'name':5,'path':[],'type':5", plain(u"1"_s));
        row("path stays", "'webspace_id':1,'path':'//a//','type':'ftp'", plain(u"1"_s, u"//a//"_s));
    }

    void projects() {
        QFETCH(QByteArray, text);
        QFETCH(Project, project);
        const Project actual = decoded(text);
        QCOMPARE(actual, project);
    }

    void refused_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("path");
        QTest::newRow("no domain") << answerWith(json("{'webspace_id':1}")) << u"domain"_s;
        QTest::newRow("text as identifier")
            << answerWith(json("{'domain':'d','webspace_id':'12'}")) << u"ispconfig_webspace"_s;
        QTest::newRow("identifier beyond 64 bits")
            << answerWith(json("{'domain':'d','webspace_id':99999999999999999999}"))
            << u"ispconfig_webspace"_s;
        QTest::newRow("coder as text")
            << (json("{'user':{'name':'E','coder':'ja'},'projects':[]}")) << u"coder"_s;
        QTest::newRow("no projects") << (json("{'user':{'name':'E'}}")) << u"projects"_s;
        QTest::newRow("project is a number") << answerWith("5") << u"projects"_s;
        QTest::newRow("half a file") << (json("{'user':{'name':'E'},'proj")) << u""_s;
    }

    void refused() {
        QFETCH(QByteArray, text);
        QFETCH(QString, path);
        try {
            ApplicationsResponse::decode(text);
            QFAIL("decoded");
        } catch (const DecodingError& error) {
            QCOMPARE(error.path(), path);
            if (path == "ispconfig_webspace"_L1)
                QCOMPARE(error.description(), u"Webspace-ID fehlt"_s);
        }
    }

    void accountsSurviveARoundTrip() {
        const QList<Account> accounts{{u"1"_s, u"ü@x.example"_s, u"\"Ü\""_s}, {u"2"_s, none, u"Zwei"_s}};
        const QByteArray encoded = encodeAccounts(accounts);
        QVERIFY(!encoded.contains("null"));
        QCOMPARE(decodeAccounts(encoded), accounts);
        QVERIFY_THROWS_EXCEPTION(DecodingError, decodeAccounts(json("[{'id':'1','email':null}]")));
        QCOMPARE(decodeAccounts(json("[{'id':'1','email':null,'displayName':'A'}]")).value(0).email, none);
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
