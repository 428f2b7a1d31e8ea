#include "StateFixture.h"

#include "sandbox/Identities.h"
#include "sandbox/ProjectTrees.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>

/// What the buttons of a row do, on real parts: ssh, https and the programs that would open.
class TestStateActions : public StateFixture {
    Q_OBJECT

    /// A host whose ssh client reaches the platform's hosts.
    [[nodiscard]] HostSystem reachingHost() const {
        HostSystem reaching = host();
        reaching.ssh = m_platform->ssh().binFolder() + QStringLiteral("/ssh");
        return reaching;
    }

    /// A project whose site is the platform's.
    [[nodiscard]] Project siteProject(const QString& host = QStringLiteral("127.0.0.1")) const {
        return {host + QStringLiteral(":%1").arg(m_platform->sites().port()), std::nullopt,
                QStringLiteral("1"), QStringLiteral("/"), ProjectType::ssh};
    }

    [[nodiscard]] const sandbox::HostedProject& hosted(int index) const {
        return m_platform->people().at(0).projects.at(index);
    }

    static void trustSites(const QStringList& files) {
        QList<QSslCertificate> certificates;
        for (const QString& file : files)
            certificates += QSslCertificate::fromPath(file);
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setCaCertificates(certificates);
        QSslConfiguration::setDefaultConfiguration(configuration);
    }

  private Q_SLOTS:

    void siteAndBackEndOpenInTheBrowser() {
        signIn("erika");
        m_shell->opened.clear();
        const QString domain = project(0).domain;
        m_state->startOpenSite(domain, false);
        m_state->startOpenSite(domain, true);
        m_state->startOpenSite(QStringLiteral("unknown.example"), true);
        QCOMPARE(m_shell->opened, (QStringList{QStringLiteral("https://") + domain,
                                               QStringLiteral("https://%1/admin").arg(domain)}));
    }

    void shellOpensWhereSshAddressesLeadOrInATerminal() {
        signIn("erika");
        m_shell->opened.clear();
        Project project = this->project(0);
        const QString login = QStringLiteral("ssh%1@%2").arg(project.webspaceID, project.domain);
        m_shell->opensSsh = true;
        await(m_state->openShell(project));
        m_shell->opensSsh = false;
        const QString terminal = m_home->filePath(QStringLiteral("xfce4-terminal"));
        QVERIFY(QFile::link(QStringLiteral("/bin/true"), terminal));
        qputenv("TERMINAL", terminal.toUtf8());
        await(m_state->openShell(project));
        QCOMPARE(m_shell->opened, (QStringList{QStringLiteral("ssh://") + login,
                                               terminal + QStringLiteral(" -x /usr/bin/ssh ") + login}));
        // A terminal that splits its command at blanks would read options here.
        project.domain = QStringLiteral("x -oProxyCommand=evil");
        await(m_state->openShell(project));
        qunsetenv("TERMINAL");
        QCOMPARE(m_shell->opened.size(), 2);
        QCOMPARE(messages().last(),
                 QStringLiteral("SSH-Shell nicht moeglich: x -oProxyCommand=evil ist kein Rechnername."));
    }

    void fileManagerAndEditorNeedAMount() {
        signIn("erika");
        const Project project = this->project(0);
        m_shell->opened.clear();
        m_state->clearActivityLog();
        m_state->openInFinder(project);
        await(m_state->openInVSCode(project));
        const QString missing =
            QStringLiteral("CloudStorage-Verzeichnis fuer %1 nicht gefunden.").arg(project.domain);
        QCOMPARE(messages(), (QStringList{missing, missing}));
        QVERIFY(m_shell->opened.isEmpty());

        await(m_state->connectProject(project));
        m_shell->opened.clear();
        m_state->openInFinder(project);
        QCOMPARE(m_shell->opened,
                 QStringList(m_home->path() + QStringLiteral("/Harvellon/") + project.domain));
        QCOMPARE(messages().last(), QStringLiteral("Öffne %1 im Finder...").arg(project.domain));
    }

    void databaseOpensWithWhatTheServerSays() {
        start(reachingHost());
        signIn("erika");
        for (const int index : {0, 1}) { // one reads dotenv, one settings
            const Project project = this->project(index);
            m_shell->opened.clear();
            m_state->clearActivityLog();
            await(m_state->openDatabase(project));
            const QString password = databasePassword(hosted(index));
            const QString database = databaseName(hosted(index));
            QCOMPARE(m_shell->opened.value(0),
                     QStringLiteral("mysql://%1:%2@127.0.0.1:3306/%3?ssh_host=%4&ssh_port=22&ssh_user=ssh%5"
                                    "&ssh_keyLocation=%6/.ssh/id_rsa&ssh_keyLocationEnabled=1")
                         .arg(databaseUser(hosted(index)), password, database, project.domain,
                              project.webspaceID, m_home->path()));
            QCOMPARE(
                messages(),
                (QStringList{
                    QStringLiteral("Lese DB-Konfiguration von %1...").arg(project.domain),
                    QStringLiteral("Oeffne %1 DB in Sequel Ace (%2)...").arg(project.domain, database)}));
        }
    }

    void databaseFailuresAreTold() {
        start(reachingHost());
        signIn("erika");
        m_shell->opened.clear();
        const Project project = this->project(0);
        const QString configuration =
            sandbox::homeFolder(m_platform->treeRoot(), hosted(0)) + QStringLiteral("/web/.env");
        QVERIFY(QFile::rename(configuration, configuration + QStringLiteral(".away")));
        await(m_state->openDatabase(project));
        QCOMPARE(messages().last().section(QLatin1Char(':'), 0, 0),
                 QStringLiteral("Config konnte nicht gelesen werden"));
        QVERIFY2(messages().last().endsWith(QLatin1String("web/.env: No such file or directory")),
                 qPrintable(messages().last()));

        const QString unreadable =
            QStringLiteral("DB-Credentials konnten nicht aus der Config gelesen werden.");
        for (const QByteArray& content : {QByteArray(8'000'000, '\xff'), QByteArray(8'000'000, '='),
                                          QByteArray("DB_DATABASE=a\nDB_USERNAME=b\n")}) {
            QFile file(configuration);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
            file.close();
            m_state->clearActivityLog();
            await(m_state->openDatabase(project));
            QCOMPARE(messages().last(), unreadable);
        }
        QVERIFY(QFile::remove(configuration));
        QVERIFY(QFile::rename(configuration + QStringLiteral(".away"), configuration));

        m_platform->ssh().acceptKey(false);
        await(m_state->openDatabase(project));
        QVERIFY(messages().last().contains(QLatin1String("Permission denied")));
        HostSystem without = host();
        without.ssh = QStringLiteral("/none/ssh");
        start(without);
        signIn("erika");
        await(m_state->openDatabase(project));
        QVERIFY(messages().last().startsWith(QLatin1String("SSH-Verbindung fehlgeschlagen: ")));
        QVERIFY(m_shell->opened.filter(QStringLiteral("mysql")).isEmpty());
        QCOMPARE(m_state->lastError(), std::nullopt);
    }

    void cacheIsClearedByTheSite_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("location");
        QTest::addColumn<QString>("outcome"); // % for the domain
        const QString cleared = QStringLiteral("Cache fuer % geleert.");
        const QString failed = QStringLiteral("Cache leeren fehlgeschlagen: ");
        QTest::newRow("page") << 200 << QByteArray() << cleared;
        QTest::newRow("no content") << 204 << QByteArray() << cleared;
        QTest::newRow("choices") << 300 << QByteArray() << "Cache-Request fuer % scheiterte mit Status 300.";
        QTest::newRow("error page") << 503 << QByteArray()
                                    << "Cache-Request fuer % scheiterte mit Status 503.";
        QTest::newRow("redirect in a circle")
            << 302 << QByteArray("/") << failed + QStringLiteral("Zu viele Weiterleitungen.");
        QTest::newRow("redirect to http")
            << 301 << QByteArray("http://127.0.0.1:9/")
            << failed + QStringLiteral(
                            "Die Weiterleitung führt auf eine Adresse, die nicht mit https gesichert ist.");
    }

    void cacheIsClearedByTheSite() {
        QFETCH(int, status);
        QFETCH(QByteArray, location);
        QFETCH(QString, outcome);
        trustSites({m_platform->sites().certificate()});
        Fault answer;
        answer.status = status;
        answer.location = location;
        m_platform->setFault(Endpoint::site, answer);
        const Project project = siteProject();
        const qsizetype before = m_platform->requests("/").size();
        m_state->clearActivityLog();
        await(m_state->clearCache(project));
        QCOMPARE(messages(), (QStringList{QStringLiteral("Leere Cache fuer %1...").arg(project.domain),
                                          outcome.replace(QLatin1Char('%'), project.domain)}));
        QVERIFY(m_platform->requests("/").size() > before);
        QVERIFY(!m_platform->requests("/").last().headers.contains("authorization"));
    }

    void cacheRequestFollowsToTheSitesProperName() {
        sandbox::Faults none;
        const sandbox::Sites proper(m_home->filePath(QStringLiteral("proper")), none);
        trustSites({m_platform->sites().certificate(), proper.certificate()});
        Fault moved;
        moved.status = 308;
        moved.location =
            QByteArray("https://127.0.0.1:%/neu").replace('%', QByteArray::number(proper.port()));
        m_platform->setFault(Endpoint::site, moved);
        await(m_state->clearCache(siteProject()));
        QCOMPARE(messages().last(), QStringLiteral("Cache fuer %1 geleert.").arg(siteProject().domain));
        QCOMPARE(none.requests("/neu").size(), 1);

        moved.location = m_platform->server().toUtf8().replace("http:", "https:"); // nobody speaks TLS there
        m_platform->setFault(Endpoint::site, moved);
        await(m_state->clearCache(siteProject()));
        QVERIFY(messages().last().startsWith(QLatin1String("Cache leeren fehlgeschlagen: ")));
    }

    void sitesThatCannotBeTrustedOrNamedAreToldWithTheReason() {
        trustSites({});
        await(m_state->clearCache(siteProject()));
        QVERIFY2(messages().last().contains(QLatin1String("certificate")), qPrintable(messages().last()));
        Project unnamed = siteProject();
        unnamed.domain = QStringLiteral("a b");
        await(m_state->clearCache(unnamed));
        QCOMPARE(messages().last(), QStringLiteral("Ungueltige Cache-URL: https://a b/?type=5820917364"));
    }

    void browserTabFillsTheSearch_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("search");
        QTest::addColumn<QString>("told");
        QTest::newRow("tab") << "echo '  https://www.alpenhof.sandbox.test/x  '"
                             << "alpenhof.sandbox.test"
                             << "Suche mit Chrome-Domain gefuellt: alpenhof.sandbox.test";
        QTest::newRow("no browser") << "echo ' Google Chrome läuft nicht. ' >&2; exit 1"
                                    << "vorher"
                                    << "Chrome-Tab konnte nicht gelesen werden: Google Chrome läuft nicht.";
        QTest::newRow("blank page") << "echo about:blank"
                                    << "vorher"
                                    << "Chrome-Tab-URL unbrauchbar: about:blank";
        QTest::newRow("nothing") << "true"
                                 << "vorher"
                                 << "Chrome-Tab-URL unbrauchbar: ";
    }

    void browserTabFillsTheSearch() {
        QFETCH(QString, script);
        QFETCH(QString, search);
        QFETCH(QString, told);
        HostSystem host = this->host();
        host.browserQuery = {QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}};
        start(host);
        m_state->setSearchText(QStringLiteral("vorher"));
        await(m_state->fillSearchFromChrome());
        QCOMPARE(m_state->searchText(), search);
        QCOMPARE(messages().last(), told);
        QCOMPARE(m_state->lastError(), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestStateActions)
#include "tst_state_actions.moc"
