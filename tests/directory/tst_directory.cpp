#include "Directory/Account.h"
#include "Directory/ApplicationsResponse.h"
#include "Directory/DecodingError.h"
#include "Directory/PlainDomain.h"
#include "Directory/ProjectAPI.h"
#include "Directory/StoredProjects.h"
#include "System/Network/Http.h"
#include "sandbox/Sandbox.h"

#include "support/Await.h"

#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using Endpoint = sandbox::Sandbox::Endpoint;
using Case = ProjectAPIError::Case;

namespace {
const QByteArray directoryPath = "/api/json/applications";

/// JSON in C++ is easier to read with single quotes.
QByteArray json(const char* text) {
    return QByteArray(text).replace('\'', '"');
}

QByteArray answerWith(const QByteArray& project) {
    return json("{'user':{'name':'Erika'},'projects':[") + project + "]}";
}

const std::optional<QString> none;
} // namespace

Q_DECLARE_METATYPE(Project)

/// The list of projects: how it is asked for, and how it is read.
class TestDirectory : public QObject {
    Q_OBJECT

    QTemporaryDir m_folder;
    QNetworkAccessManager m_network;
    std::unique_ptr<sandbox::Sandbox> m_platform;

    [[nodiscard]] QString endpoint() const {
        return m_platform->server() + QString::fromLatin1(directoryPath);
    }

    ApplicationsResponse fetch(const QString& address, const QString& token) {
        ProjectAPI api(address, m_network);
        return await(api.fetchApplications(token));
    }

    void fails(const QString& address, const QString& token, const ProjectAPIError& expected) {
        try {
            fetch(address, token);
            QFAIL("answered");
        } catch (const ProjectAPIError& error) {
            QCOMPARE(error.description(), expected.description());
        }
    }

  private Q_SLOTS:

    void init() {
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_folder.path(), 0, false});
    }

    void cleanup() { m_platform.reset(); }

    void fetchesProfileAndProjects() {
        const QString token = m_platform->signIn(u"erika"_s).accessToken;
        const ApplicationsResponse response = fetch(endpoint(), u"  "_s + token + u'\n');
        QCOMPARE(response.user.name, u"Erika Beispiel"_s);
        QCOMPARE(response.user.allowDatabaseConnect, std::optional(true));
        QCOMPARE(response.projects.size(), 12);
        const QList<sandbox::RecordedRequest> requests = m_platform->requests(directoryPath);
        QCOMPARE(requests.size(), 1);
        QCOMPARE(requests.first().method, QByteArray("POST"));
        QCOMPARE(requests.first().headers.value("authorization"), QByteArray("Bearer ") + token.toUtf8());
        QCOMPARE(requests.first().headers.value("accept"), QByteArray("application/json"));
        QCOMPARE(requests.first().headers.value("content-type"), QByteArray("application/json"));
        QCOMPARE(requests.first().body, QByteArray());
    }

    void asksNothingWithoutTokenOrAddress() {
        fails(u"not an address"_s, u"  \n"_s, ProjectAPIError(Case::missingToken));
        fails(u"http://a b/"_s, u"t"_s, ProjectAPIError(Case::badURL));
        QCOMPARE(m_platform->requests(directoryPath).size(), 0);
    }

    void misbehaviour_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("requests");
        QTest::newRow("401") << 401 << int(Case::unauthorized) << 1;
        QTest::newRow("405 to both") << 405 << int(Case::badResponse) << 2;
        QTest::newRow("500") << 500 << int(Case::badResponse) << 1;
    }

    void misbehaviour() {
        QFETCH(int, status);
        QFETCH(int, error);
        QFETCH(int, requests);
        m_platform->setFault(Endpoint::directory, {.status = status, .body = QByteArray(1000, 'x')});
        const QString logged = u"API POST %1 -> HTTP %2: "_s.arg(endpoint()).arg(status);
        QTest::ignoreMessage(QtCriticalMsg, qPrintable(logged + QString(200, u'x')));
        fails(endpoint(), u"t"_s, ProjectAPIError(Case(error), status));
        QCOMPARE(m_platform->requests(directoryPath).size(), requests);
    }

    void refusedMethodLeadsToOneGet() {
        m_platform->setFault(Endpoint::directory, {.refusePost = true});
        const QString token = m_platform->signIn(u"jonas"_s).accessToken;
        QCOMPARE(fetch(endpoint(), token).user.name, u"Jonas Muster"_s);
        QCOMPARE(m_platform->requests(directoryPath).last().method, QByteArray("GET"));
    }

    void redirectTakesTheTokenNowhere() {
        QTemporaryDir otherFolder;
        const sandbox::Sandbox other({otherFolder.path(), 0, false});
        const QByteArray address = other.server().toUtf8() + directoryPath;
        m_platform->setFault(Endpoint::directory, {.status = 302, .location = address});
        fails(endpoint(), u"t"_s, ProjectAPIError(Case::badResponse, 302));
        QCOMPARE(other.requests(directoryPath).size(), 0);
    }

    void dripsEndAfterFifteenSeconds() {
        m_platform->setFault(Endpoint::directory,
                             {.body = QByteArray(1000, ' '), .drip = std::chrono::milliseconds(100)});
        QElapsedTimer timer;
        timer.start();
        QVERIFY_THROWS_EXCEPTION(NetworkError, fetch(endpoint(), u"t"_s));
        QVERIFY(timer.elapsed() >= 14900);
    }

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
        const auto row = [](const char* name, const QByteArray& members, const Project& project) {
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
        const QString name(1000, u'n');
        row("long name", "'webspace_id':1,'name':'" + name.toUtf8() + "x'",
            {u"d.example"_s, name, u"1"_s, u"/"_s, ProjectType::harvellon});
        row("path stays", "'webspace_id':1,'path':'//a//','type':'ftp'", plain(u"1"_s, u"//a//"_s));
    }

    void projects() {
        QFETCH(QByteArray, text);
        QFETCH(Project, project);
        QCOMPARE(ApplicationsResponse::decode(answerWith(text)).projects, QList{project});
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

QTEST_GUILESS_MAIN(TestDirectory)
#include "tst_directory.moc"
