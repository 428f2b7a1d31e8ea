#include "Directory/Account.h"
#include "Directory/ApplicationsResponse.h"
#include "Directory/DecodingError.h"
#include "Directory/PlainDomain.h"
#include "Directory/StoredProjects.h"

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

    void domains_data() {
        QTest::addColumn<QString>("domain");
        QTest::addColumn<bool>("plain");
        for (const QString& good :
             {u"www.example.org"_s, u"WWW.Example.ORG"_s, u"a_b.1-2.example"_s, u"localhost"_s,
              u"127.0.0.1"_s, u"bücher.example"_s, u"xn--bcher-kva.example"_s, u"日本.example"_s,
              u"𠮷.example"_s, QString(63, u'a'), QStringList(127, u"a"_s).join(u'.')})
            QTest::addRow("%s", qPrintable(good.left(30))) << good << true;
        for (const QString& bad : {u""_s,
                                   u"."_s,
                                   u".."_s,
                                   u"a..b"_s,
                                   u".a"_s,
                                   u"a."_s,
                                   u"-oProxyCommand=x"_s,
                                   u"a.-b"_s,
                                   u"../x"_s,
                                   u"a/b"_s,
                                   u"a\\b"_s,
                                   u"a b"_s,
                                   u" a"_s,
                                   u"a\nb"_s,
                                   u"a\x1b[2Jb"_s,
                                   u"a\u202eb"_s,
                                   u"a\u00adb"_s,
                                   u"a\u034fb"_s,
                                   u"a\u200db"_s,
                                   u"a%2eb"_s,
                                   u"a@b"_s,
                                   u"a:22"_s,
                                   u"[a]"_s,
                                   u"::1"_s,
                                   u"a?b"_s,
                                   u"a#b"_s,
                                   u"a*"_s,
                                   u"~a"_s,
                                   u"a=b"_s,
                                   u"a,b"_s,
                                   u"$a"_s,
                                   u"a`b`"_s,
                                   u"ｅxample.org"_s,
                                   u"a。b"_s,
                                   u"ﷺ.org"_s,
                                   u"½.org"_s,
                                   u"0"_s,
                                   u"127.1"_s,
                                   u"0x7f.1"_s,
                                   u"😀.org"_s,
                                   QString(QChar(0)),
                                   QString(QChar(0xd800)),
                                   QString(64, u'a'),
                                   QString(60, u'ü'),
                                   QString(300, u'a'),
                                   QStringList(128, u"a"_s).join(u'.')})
            QTest::addRow("%s", bad.left(30).toUtf8().toHex().constData()) << bad << false;
    }

    void domains() {
        QFETCH(QString, domain);
        QFETCH(bool, plain);
        QCOMPARE(isPlainDomain(domain), plain);
        QCOMPARE(isPlainSite(domain), plain || domain == u"a:22"_s);
    }

    void portsOfSites() {
        for (const QString& good : {u"a:1"_s, u"a:8443"_s, u"a:65535"_s})
            QVERIFY2(isPlainSite(good), qPrintable(good));
        for (const QString& bad : {u"a:"_s, u"a:0"_s, u"a:65536"_s, u"a:+1"_s, u"a: 1"_s, u"a:1:2"_s, u":1"_s,
                                   u"a:١"_s, u"a@b:1"_s, u"a:1@b"_s})
            QVERIFY2(!isPlainSite(bad), qPrintable(bad));
    }

    void storedProjectsAreWhatWasStored() {
        const QList<Project> projects{
            {u"d.example"_s, none, u"-9223372036854775807"_s, u"/"_s, ProjectType::ssh},
            {u"e.example"_s, u"E"_s, u"7"_s, u"/a b"_s, ProjectType::harvellon}};
        QCOMPARE(projectsStoredIn(storedProjects(projects)), projects);
    }

    void storedProjectsThatNoDirectorySendsAreLeftOut_data() {
        QTest::addColumn<QByteArray>("project");
        QTest::newRow("option") << json("{'domain':'-oX','webspaceID':'1','path':'/'}");
        QTest::newRow("other login") << json("{'domain':'d.example','webspaceID':'1@evil:/','path':'/'}");
        QTest::newRow("not as decoded") << json("{'domain':'d.example','webspaceID':'+01','path':'/'}");
        QTest::newRow("beyond numbers")
            << json("{'domain':'d.example','webspaceID':'9223372036854775808','path':'/'}");
        QTest::newRow("number") << json("{'domain':'d.example','webspaceID':1,'path':'/'}");
        QTest::newRow("relative") << json("{'domain':'d.example','webspaceID':'1','path':'a'}");
        QTest::newRow("no object") << json("7");
    }

    void storedProjectsThatNoDirectorySendsAreLeftOut() {
        QFETCH(QByteArray, project);
        QCOMPARE(projectsStoredIn('[' + project + ']'), QList<Project>());
    }

    void projects_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<Project>("project");
        const auto row = [](const char* name, const QByteArray& text, const Project& project) {
            QTest::newRow(name) << text << project;
        };
        const QString d = u"d.example"_s;
        row("least", json("{'domain':'d.example','webspace_id':12}"),
            {d, none, u"12"_s, u"/"_s, ProjectType::harvellon});
        row("trimmed and lowered",
            json("{'domain':'d.example','ispconfig_webspace':7,'path':'  web ','type':' SSH\\n','name':'N'}"),
            {d, u"N"_s, u"7"_s, u"/web"_s, ProjectType::ssh});
        row("first identifier wins", json("{'domain':'d.example','webspace_id':1,'ispconfig_webspace':2}"),
            {d, none, u"1"_s, u"/"_s, ProjectType::harvellon});
        row("null falls to the second",
            json("{'domain':'d.example','webspace_id':null,'ispconfig_webspace':9}"),
            {d, none, u"9"_s, u"/"_s, ProjectType::harvellon});
        row("fraction falls to the second",
            json("{'domain':'d.example','webspace_id':1.5,'ispconfig_webspace':9}"),
            {d, none, u"9"_s, u"/"_s, ProjectType::harvellon});
        row("digits beyond doubles", json("{'domain':'d.example','webspace_id':9007199254740993}"),
            {d, none, u"9007199254740993"_s, u"/"_s, ProjectType::harvellon});
        row("negative, largest", json("{'domain':'d.example','webspace_id':-9223372036854775807}"),
            {d, none, u"-9223372036854775807"_s, u"/"_s, ProjectType::harvellon});
        row("ill-typed trifles", json("{'domain':'d.example','webspace_id':1,'name':5,'path':[],'type':5}"),
            {d, none, u"1"_s, u"/"_s, ProjectType::harvellon});
        row("path stays", json("{'domain':'d.example','webspace_id':1,'path':'//a//','type':'ftp'}"),
            {d, none, u"1"_s, u"//a//"_s, ProjectType::harvellon});
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
        QTest::newRow("no user name") << (json("{'user':{},'projects':[]}")) << u"name"_s;
        QTest::newRow("coder as text")
            << (json("{'user':{'name':'E','coder':'ja'},'projects':[]}")) << u"coder"_s;
        QTest::newRow("no projects") << (json("{'user':{'name':'E'}}")) << u"projects"_s;
        QTest::newRow("project is a number") << answerWith("5") << u"projects"_s;
        QTest::newRow("half a file") << (json("{'user':{'name':'E'},'proj")) << u""_s;
        QTest::newRow("nested without end") << QByteArray(100000, '[') << u""_s;
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
