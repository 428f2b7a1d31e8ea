#include "StateFixture.h"

#include "sandbox/Identities.h"
#include "sandbox/ssh/ProjectTrees.h"
#include "support/Leftovers.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>

using namespace Qt::StringLiterals;

/// What the buttons of a row do, with real ssh and https and recording openers.
class TestStateActions : public StateFixture {
    Q_OBJECT

    /// The host system, with an ssh client that reaches the sandbox's sshd.
    [[nodiscard]] HostSystem reachingHost() const {
        HostSystem reaching = host();
        reaching.ssh = m_platform->ssh().binFolder() + u"/ssh"_s;
        return reaching;
    }

    /// A project whose site is the platform's.
    [[nodiscard]] Project siteProject(const QString& host = u"127.0.0.1"_s) const {
        return {host + u":%1"_s.arg(m_platform->sites().port()), std::nullopt, u"1"_s, u"/"_s,
                ProjectType::ssh};
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

    void shellOpensWhereSshAddressesLeadOrInATerminal() {
        signIn("erika");
        m_shell->opened.clear();
        Project project = this->project(0);
        const QString login = u"ssh%1@%2"_s.arg(project.webspaceID, project.domain);
        m_shell->opensSsh = true;
        await(m_state->parts().actions.perform(HoverTarget::ssh, project, false));
        m_shell->opensSsh = false;
        const QString terminal = m_home->filePath(u"xfce4-terminal"_s);
        QVERIFY(QFile::link(u"/bin/true"_s, terminal));
        qputenv("TERMINAL", terminal.toUtf8());
        await(m_state->parts().actions.perform(HoverTarget::ssh, project, false));
        QCOMPARE(m_shell->opened,
                 (QStringList{u"ssh://"_s + login, terminal + u" -x /usr/bin/ssh "_s + login}));
        // A terminal that splits its command at blanks would read options here.
        project.domain = u"x -oProxyCommand=evil"_s;
        await(m_state->parts().actions.perform(HoverTarget::ssh, project, false));
        qunsetenv("TERMINAL");
        QCOMPARE(m_shell->opened.size(), 2);
        QCOMPARE(messages().last(),
                 u"SSH-Shell nicht moeglich: x -oProxyCommand=evil ist kein Rechnername."_s);
    }

    void theEditorsWorkspaceIsQuietWhereWanted() {
        signIn("erika");
        const QString domain = this->project(0).domain;
        const QString workspaces = host().temporaryFolder + u"/HarvellonConnect-VSCode/"_s;
        for (const bool quiet : {false, true}) {
            QCOMPARE(m_state->quietWorkspace(), false);
            m_state->setQuietWorkspace(quiet);
            start();
            QCOMPARE(m_state->quietWorkspace(), quiet);
            await(m_state->parts().connections.connect(this->project(0)));
            QFile workspace(workspaces + domain + u".code-workspace"_s);
            QVERIFY(workspace.open(QIODevice::ReadOnly));
            QCOMPARE(workspace.readAll().contains("\"git.autorefresh\": false"), quiet);
            await(m_state->parts().connections.disconnect(domain, false));
        }
    }

    void fileManagerAndEditorNeedAMount() {
        signIn("erika");
        const Project project = this->project(0);
        m_shell->opened.clear();
        m_state->activityLog()->clear();
        await(m_state->parts().actions.perform(HoverTarget::finder, project, false));
        await(m_state->parts().actions.perform(HoverTarget::vscode, project, false));
        const QString missing = u"CloudStorage-Verzeichnis fuer %1 nicht gefunden."_s.arg(project.domain);
        QCOMPARE(messages(), (QStringList{missing, missing}));
        QVERIFY(m_shell->opened.isEmpty());

        await(m_state->parts().connections.connect(project));
        m_shell->opened.clear();
        await(m_state->parts().actions.perform(HoverTarget::finder, project, false));
        QCOMPARE(m_shell->opened, QStringList(m_home->path() + u"/Harvellon/"_s + project.domain));
        QCOMPARE(messages().last(), u"Öffne %1 im Finder..."_s.arg(project.domain));
    }

    void databaseOpensWithWhatTheServerSays() {
        start(reachingHost());
        signIn("erika");
        for (const int index : {0, 1}) { // one reads dotenv, one settings
            const Project project = this->project(index);
            m_shell->opened.clear();
            m_state->activityLog()->clear();
            await(m_state->parts().actions.perform(HoverTarget::database, project, false));
            const QString password = databasePassword(hosted(index));
            const QString database = databaseName(hosted(index));
            QCOMPARE(m_shell->opened.value(0),
                     u"mysql://%1:%2@127.0.0.1:3306/%3?ssh_host=%4&ssh_port=22&ssh_user=ssh%5"
                     "&ssh_keyLocation=%6/.ssh/id_rsa&ssh_keyLocationEnabled=1"_s.arg(
                         databaseUser(hosted(index)), password, database, project.domain, project.webspaceID,
                         m_home->path()));
            QCOMPARE(messages(),
                     (QStringList{u"Lese DB-Konfiguration von %1..."_s.arg(project.domain),
                                  u"Oeffne %1 DB in Sequel Ace (%2)..."_s.arg(project.domain, database)}));
        }
    }

    void mountedProjectsShareAConnection() {
        HostSystem host = reachingHost();
        host.socketFolder = m_home->filePath(u"s"_s);
        start(host);
        signIn("erika");
        const Project project = this->project(0);
        const QString login = project.sshLogin();
        await(m_state->parts().connections.connect(project));
        const QString terminal = m_home->filePath(u"xfce4-terminal"_s);
        QVERIFY(QFile::link(u"/bin/true"_s, terminal));
        qputenv("TERMINAL", terminal.toUtf8());
        const QString own = u" -x %1 %2"_s.arg(host.ssh, login);
        const QString shared = u" -x %1 -S %2/"_s.arg(host.ssh, host.socketFolder);
        const auto openShell = [this, &project] {
            await(m_state->parts().actions.perform(HoverTarget::ssh, project, false));
            return m_shell->opened.last();
        };
        QTRY_VERIFY(openShell().startsWith(terminal + shared));
        QVERIFY(m_shell->opened.last().endsWith(u" -o ControlMaster=no "_s + login));

        QFile log(m_platformFolder.filePath(u"ssh/sshd.log"_s));
        QVERIFY(log.open(QIODevice::ReadOnly));
        log.readAll();
        await(m_state->parts().actions.perform(HoverTarget::database, project, false));
        QVERIFY(m_shell->opened.last().startsWith(u"mysql://"_s));
        QVERIFY(!log.readAll().contains("Accepted publickey"));
        await(m_state->parts().connections.disconnect(project.domain, false));
        QCOMPARE(openShell(), terminal + own);
        await(m_state->parts().actions.perform(HoverTarget::database, project, false));
        QVERIFY(log.readAll().contains("Accepted publickey"));
        qunsetenv("TERMINAL");
        QTRY_COMPARE(processesWith(host.socketFolder), QList<pid_t>());

        await(m_state->parts().connections.connect(project));
        await(m_state->shutDown());
        QCOMPARE(processesWith(host.socketFolder), QList<pid_t>());
        QVERIFY(m_state->isIdle());
    }

    void databaseFailuresAreTold() {
        start(reachingHost());
        signIn("erika");
        m_shell->opened.clear();
        const Project project = this->project(0);
        const QString configuration = sandbox::homeFolder(m_platform->treeRoot(), hosted(0)) + u"/web/.env"_s;
        QVERIFY(QFile::rename(configuration, configuration + u".away"_s));
        await(m_state->parts().actions.perform(HoverTarget::database, project, false));
        QCOMPARE(messages().last().section(u':', 0, 0), u"Config konnte nicht gelesen werden"_s);
        QVERIFY2(messages().last().endsWith("web/.env: No such file or directory"_L1),
                 qPrintable(messages().last()));

        const QString unreadable = u"DB-Credentials konnten nicht aus der Config gelesen werden."_s;
        for (const QByteArray& content : {QByteArray(8'000'000, '\xff'), QByteArray(8'000'000, '='),
                                          QByteArray("DB_DATABASE=a\nDB_USERNAME=b\n")}) {
            QFile file(configuration);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(content);
            file.close();
            m_state->activityLog()->clear();
            await(m_state->parts().actions.perform(HoverTarget::database, project, false));
            QCOMPARE(messages().last(), unreadable);
        }
        QVERIFY(QFile::remove(configuration));
        QVERIFY(QFile::rename(configuration + u".away"_s, configuration));

        m_platform->ssh().acceptKey(false);
        await(m_state->parts().actions.perform(HoverTarget::database, project, false));
        QVERIFY(messages().last().contains("Permission denied"_L1));
        HostSystem without = host();
        without.ssh = u"/none/ssh"_s;
        start(without);
        signIn("erika");
        await(m_state->parts().actions.perform(HoverTarget::database, project, false));
        QVERIFY(messages().last().startsWith("SSH-Verbindung fehlgeschlagen: "_L1));
        QVERIFY(m_shell->opened.filter(u"mysql"_s).isEmpty());
        QCOMPARE(m_state->lastError(), std::nullopt);
    }

    void cacheIsClearedByTheSite_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("location");
        QTest::addColumn<QString>("outcome"); // % for the domain
        const QString cleared = u"Cache fuer % geleert."_s;
        const QString failed = u"Cache leeren fehlgeschlagen: "_s;
        QTest::newRow("page") << 200 << QByteArray() << cleared;
        QTest::newRow("no content") << 204 << QByteArray() << cleared;
        QTest::newRow("choices") << 300 << QByteArray()
                                 << u"Cache-Request fuer % scheiterte mit Status 300."_s;
        QTest::newRow("error page") << 503 << QByteArray()
                                    << u"Cache-Request fuer % scheiterte mit Status 503."_s;
        QTest::newRow("redirect in a circle")
            << 302 << QByteArray("/") << failed + u"Zu viele Weiterleitungen."_s;
        QTest::newRow("redirect to http")
            << 301 << QByteArray("http://127.0.0.1:9/")
            << failed + u"Die Weiterleitung führt auf eine Adresse, die nicht mit https gesichert ist."_s;
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
        m_state->activityLog()->clear();
        await(m_state->parts().actions.perform(HoverTarget::cache, project, false));
        QCOMPARE(messages(), (QStringList{u"Leere Cache fuer %1..."_s.arg(project.domain),
                                          outcome.replace(u'%', project.domain)}));
        QVERIFY(m_platform->requests("/").size() > before);
        QVERIFY(!m_platform->requests("/").last().headers.contains("authorization"));
    }

    void cacheRequestFollowsToTheSitesProperName() {
        sandbox::Faults none;
        const sandbox::Sites proper(m_home->filePath(u"proper"_s), none);
        trustSites({m_platform->sites().certificate(), proper.certificate()});
        Fault moved;
        moved.status = 308;
        moved.location =
            QByteArray("https://127.0.0.1:%/neu").replace('%', QByteArray::number(proper.port()));
        m_platform->setFault(Endpoint::site, moved);
        await(m_state->parts().actions.perform(HoverTarget::cache, siteProject(), false));
        QCOMPARE(messages().last(), u"Cache fuer %1 geleert."_s.arg(siteProject().domain));
        QCOMPARE(none.requests("/neu").size(), 1);

        moved.location = m_platform->server().toUtf8().replace("http:", "https:"); // plain HTTP on that port
        m_platform->setFault(Endpoint::site, moved);
        await(m_state->parts().actions.perform(HoverTarget::cache, siteProject(), false));
        QVERIFY(messages().last().startsWith("Cache leeren fehlgeschlagen: "_L1));
    }

    void sitesThatCannotBeTrustedOrNamedAreToldWithTheReason() {
        trustSites({});
        await(m_state->parts().actions.perform(HoverTarget::cache, siteProject(), false));
        QVERIFY2(messages().last().contains("certificate"_L1), qPrintable(messages().last()));
        Project unnamed = siteProject();
        unnamed.domain = u"a b"_s;
        await(m_state->parts().actions.perform(HoverTarget::cache, unnamed, false));
        QCOMPARE(messages().last(), u"Ungueltige Cache-URL: https://a b/?type=5820917364"_s);
    }

    void browserTabFillsTheSearch_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("search");
        QTest::addColumn<QString>("told");
        QTest::newRow("tab") << u"echo '  https://www.alpenhof.sandbox.test/x  '"_s
                             << u"alpenhof.sandbox.test"_s
                             << u"Suche mit Chrome-Domain gefuellt: alpenhof.sandbox.test"_s;
        QTest::newRow("no browser")
            << u"echo ' Google Chrome läuft nicht. ' >&2; exit 1"_s << u"vorher"_s
            << u"Chrome-Tab konnte nicht gelesen werden: Google Chrome läuft nicht."_s;
        QTest::newRow("blank page") << u"echo about:blank"_s << u"vorher"_s
                                    << u"Chrome-Tab-URL unbrauchbar: about:blank"_s;
        QTest::newRow("nothing") << u"true"_s << u"vorher"_s << u"Chrome-Tab-URL unbrauchbar: "_s;
    }

    void browserTabFillsTheSearch() {
        QFETCH(QString, script);
        QFETCH(QString, search);
        QFETCH(QString, told);
        HostSystem host = this->host();
        host.browserQuery = {u"/bin/sh"_s, {u"-c"_s, script}};
        start(host);
        m_state->setSearchText(u"vorher"_s);
        m_state->fillSearchFromChrome();
        QTRY_COMPARE(messages().last(), told);
        QCOMPARE(m_state->searchText(), search);
        QCOMPARE(m_state->lastError(), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestStateActions)
#include "tst_state_actions.moc"
