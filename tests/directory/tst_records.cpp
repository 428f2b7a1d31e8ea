#include "Directory/Account.h"
#include "Directory/ApplicationsResponse.h"
#include "Directory/DecodingError.h"

#include <QTest>

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
        const auto row = [](const char* name, const QByteArray& text, const Project& project) {
            QTest::newRow(name) << text << project;
        };
        const QString d = QStringLiteral("d.example");
        row("least", json("{'domain':'d.example','webspace_id':12}"),
            {d, none, QStringLiteral("12"), QStringLiteral("/"), ProjectType::harvellon});
        row("trimmed and lowered",
            json("{'domain':'d.example','ispconfig_webspace':7,'path':'  web ','type':' SSH\\n','name':'N'}"),
            {d, QStringLiteral("N"), QStringLiteral("7"), QStringLiteral("/web"), ProjectType::ssh});
        row("first identifier wins", json("{'domain':'d.example','webspace_id':1,'ispconfig_webspace':2}"),
            {d, none, QStringLiteral("1"), QStringLiteral("/"), ProjectType::harvellon});
        row("null falls to the second",
            json("{'domain':'d.example','webspace_id':null,'ispconfig_webspace':9}"),
            {d, none, QStringLiteral("9"), QStringLiteral("/"), ProjectType::harvellon});
        row("fraction falls to the second",
            json("{'domain':'d.example','webspace_id':1.5,'ispconfig_webspace':9}"),
            {d, none, QStringLiteral("9"), QStringLiteral("/"), ProjectType::harvellon});
        row("digits beyond doubles", json("{'domain':'d.example','webspace_id':9007199254740993}"),
            {d, none, QStringLiteral("9007199254740993"), QStringLiteral("/"), ProjectType::harvellon});
        row("negative, largest", json("{'domain':'d.example','webspace_id':-9223372036854775807}"),
            {d, none, QStringLiteral("-9223372036854775807"), QStringLiteral("/"), ProjectType::harvellon});
        row("ill-typed trifles", json("{'domain':'d.example','webspace_id':1,'name':5,'path':[],'type':5}"),
            {d, none, QStringLiteral("1"), QStringLiteral("/"), ProjectType::harvellon});
        row("path stays", json("{'domain':'d.example','webspace_id':1,'path':'//a//','type':'ftp'}"),
            {d, none, QStringLiteral("1"), QStringLiteral("//a//"), ProjectType::harvellon});
    }

    void projects() {
        QFETCH(QByteArray, text);
        QFETCH(Project, project);
        const Project actual = decoded(text);
        QCOMPARE(actual, project);
        QCOMPARE(qHash(actual), qHash(project));
    }

    void refused_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("path");
        QTest::newRow("no domain") << answerWith(json("{'webspace_id':1}")) << "domain";
        QTest::newRow("text as identifier")
            << answerWith(json("{'domain':'d','webspace_id':'12'}")) << "ispconfig_webspace";
        QTest::newRow("identifier beyond 64 bits")
            << answerWith(json("{'domain':'d','webspace_id':99999999999999999999}")) << "ispconfig_webspace";
        QTest::newRow("no user name") << (json("{'user':{},'projects':[]}")) << "name";
        QTest::newRow("coder as text")
            << (json("{'user':{'name':'E','coder':'ja'},'projects':[]}")) << "coder";
        QTest::newRow("no projects") << (json("{'user':{'name':'E'}}")) << "projects";
        QTest::newRow("project is a number") << answerWith("5") << "projects";
        QTest::newRow("half a file") << (json("{'user':{'name':'E'},'proj")) << "";
        QTest::newRow("nested without end") << QByteArray(100000, '[') << "";
    }

    void refused() {
        QFETCH(QByteArray, text);
        QFETCH(QString, path);
        try {
            ApplicationsResponse::decode(text);
            QFAIL("decoded");
        } catch (const DecodingError& error) {
            QCOMPARE(error.path(), path);
            if (path == QLatin1String("ispconfig_webspace"))
                QCOMPARE(error.description(), QStringLiteral("Webspace-ID fehlt"));
        }
    }

    void accountsSurviveARoundTrip() {
        const QList<Account> accounts{
            {QStringLiteral("1"), QStringLiteral("ü@x.example"), QStringLiteral("\"Ü\"")},
            {QStringLiteral("2"), none, QStringLiteral("Zwei")}};
        const QByteArray encoded = encodeAccounts(accounts);
        QVERIFY(!encoded.contains("null"));
        QCOMPARE(decodeAccounts(encoded), accounts);
        QVERIFY_THROWS_EXCEPTION(DecodingError, decodeAccounts(json("[{'id':'1','email':null}]")));
        QCOMPARE(decodeAccounts(json("[{'id':'1','email':null,'displayName':'A'}]")).value(0).email, none);
    }

    void encodedProjectKeepsItsOrderAndIsNotReadBack() {
        const Project project{QStringLiteral("d.example"), none, QStringLiteral("7"), QStringLiteral("/web"),
                              ProjectType::ssh};
        const QByteArray encoded = encodeProject(project);
        QCOMPARE(encoded, json("{'domain':'d.example','webspace_id':'7','ispconfig_webspace':'7',"
                               "'path':'/web','type':'ssh'}"));
        QVERIFY_THROWS_EXCEPTION(DecodingError, decoded(encoded));
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
