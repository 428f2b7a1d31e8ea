#include "StateFixture.h"

#include "sandbox/Identities.h"
#include "sandbox/ssh/ProjectTrees.h"
#include "support/Leftovers.h"

#include <QSslCertificate>
#include <QSslConfiguration>

using namespace Qt::StringLiterals;

/// What the buttons of a row do, with real ssh and https and recording openers.
class TestStateActions : public StateFixture {
    Q_OBJECT

    QString m_terminal;

    /// A project whose site is the platform's.
    [[nodiscard]] Project siteProject() const {
        return {u"127.0.0.1:%1"_s.arg(m_platform->sites().port()), std::nullopt, u"1"_s, u"/"_s,
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

    void init() {
        StateFixture::init();
        m_terminal = m_home->filePath(u"xfce4-terminal"_s);
        QVERIFY(QFile::link(u"/bin/true"_s, m_terminal));
        qputenv("TERMINAL", m_terminal.toUtf8());
        HostSystem reaching = host();
        reaching.ssh = m_platform->ssh().binFolder() + u"/ssh"_s; // reaches the sandbox's sshd
        reaching.socketFolder = m_home->filePath(u"s"_s);
        start(reaching);
        signIn("erika");
        m_shell->opened.clear();
        m_state->activityLog()->clear();
    }

    void shellOpensWhereSshAddressesLeadOrInATerminal() {
        const QString login = project(0).sshLogin();
        m_shell->opensSsh = true;
        perform(HoverTarget::ssh, project(0));
        m_shell->opensSsh = false;
        perform(HoverTarget::ssh, project(0));
        QCOMPARE(m_shell->opened, (QStringList{u"ssh://"_s + login,
                                               m_terminal + u" -x %1 "_s.arg(m_state->host().ssh) + login}));
    }

    void fileManagerAndEditorNeedAMount() {
        const Project project = this->project(0);
        perform(HoverTarget::finder, project);
        perform(HoverTarget::vscode, project);
        const QString missing = u"CloudStorage-Verzeichnis fuer %1 nicht gefunden."_s.arg(project.domain);
        QCOMPARE(messages(), (QStringList{missing, missing}));
        QVERIFY(m_shell->opened.isEmpty());

        connectTo(0);
        m_shell->opened.clear();
        perform(HoverTarget::finder, project);
        QCOMPARE(m_shell->opened, QStringList(m_home->path() + u"/Harvellon/"_s + project.domain));
        QCOMPARE(messages().last(), u"Öffne %1 im Finder..."_s.arg(project.domain));
    }

    void aProjectIsOpenedInItsOwnEditorFromNowOn() {
        const QString editor = m_home->filePath(u".local/bin/phpstorm"_s);
        QVERIFY(QDir().mkpath(QFileInfo(editor).path()) && QFile::link(u"/bin/true"_s, editor));
        connectTo(0);
        const QString web = u" "_s + mountPoint(0) + u"/web"_s;
        m_state->programs()->openWith(domain(0), u"phpstorm"_s);
        QTRY_COMPARE(m_shell->opened.last(), editor + web);
        QTRY_COMPARE(messages().last(), u"Oeffne %1 in PhpStorm..."_s.arg(domain(0)));
        const auto kept = [this] {
            const ProgramSettings settings(host(), *m_preferences, m_state->parts().report, {});
            return std::pair(settings.choices().editorOf(domain(0)), settings.choices().editorOf(domain(1)));
        };
        QCOMPARE(kept(), std::pair(u"phpstorm"_s, QString()));
        m_state->programs()->setEditor(u"zed"_s);
        m_state->programs()->openWith(domain(0), u"zed"_s); // follows the settings again
        QTRY_VERIFY(m_state->lastErrorText().startsWith(u"Zed wurde nicht gefunden. "_s));
        m_state->programs()->setEditor({});
        QCOMPARE(kept(), std::pair(QString(), QString()));
    }

    void databaseOpensWithWhatTheServerSays() {
        for (const int index : {0, 1}) { // one reads dotenv, one settings
            const Project project = this->project(index);
            m_shell->opened.clear();
            m_state->activityLog()->clear();
            perform(HoverTarget::database, project);
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
        const HostSystem& host = m_state->host();
        const Project project = this->project(0);
        connectTo(0);
        const auto openShell = [this, &project] {
            perform(HoverTarget::ssh, project);
            return m_shell->opened.last();
        };
        const QString ssh = u"%1 -x %2 "_s.arg(m_terminal, host.ssh);
        QTRY_VERIFY(openShell().startsWith(ssh + u"-S "_s + host.socketFolder));
        QVERIFY(m_shell->opened.last().endsWith(u" -o ControlMaster=no "_s + project.sshLogin()));

        QFile log(m_platformFolder.filePath(u"ssh/sshd.log"_s));
        QVERIFY(log.open(QIODevice::ReadOnly));
        log.readAll();
        perform(HoverTarget::database, project);
        QVERIFY(m_shell->opened.last().startsWith(u"mysql://"_s));
        QVERIFY(!log.readAll().contains("Accepted publickey"));
        disconnectFrom(0);
        QCOMPARE(openShell(), ssh + project.sshLogin());
        QTRY_COMPARE(processesWith(host.socketFolder), QList<pid_t>());

        connectTo(0);
        await(m_state->shutDown());
        QCOMPARE(processesWith(host.socketFolder), QList<pid_t>());
        QVERIFY(m_state->isIdle());
    }

    void databaseFailuresAreTold() {
        const Project project = this->project(0);
        const QString configuration = sandbox::homeFolder(m_platform->treeRoot(), hosted(0)) + u"/web/.env"_s;
        QVERIFY(QFile::rename(configuration, configuration + u".away"_s));
        perform(HoverTarget::database, project);
        QVERIFY(messages().last().startsWith("Config konnte nicht gelesen werden: "_L1));
        QVERIFY(messages().last().endsWith("web/.env: No such file or directory"_L1));
        const QString unreadable = u"DB-Credentials konnten nicht aus der Config gelesen werden."_s;
        for (const QByteArray& content : {QByteArray(8'000'000, '\xff'), QByteArray(8'000'000, '='),
                                          QByteArray("DB_DATABASE=a\nDB_USERNAME=b\n")}) {
            QFile file(configuration);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
            file.close();
            m_state->activityLog()->clear();
            perform(HoverTarget::database, project);
            QCOMPARE(messages().last(), unreadable);
        }
        QVERIFY(QFile::remove(configuration));
        QVERIFY(QFile::rename(configuration + u".away"_s, configuration));

        m_platform->ssh().acceptKey(false);
        perform(HoverTarget::database, project);
        QVERIFY(messages().last().contains("Permission denied"_L1));
        QVERIFY(m_shell->opened.filter(u"mysql"_s).isEmpty());
        QCOMPARE(m_state->lastError(), std::nullopt);
    }

    void cacheIsClearedByTheSite_data() {
        QTest::addColumn<Fault>("answer");
        QTest::addColumn<QString>("outcome"); // % for the domain
        const QString cleared = u"Cache fuer % geleert."_s;
        const QString failed = u"Cache leeren fehlgeschlagen: "_s;
        const auto row = [](const char* name, int status, const QByteArray& location, const QString& outcome,
                            qint64 padding = 0, int drip = 0) {
            Fault answer;
            answer.status = status;
            answer.location = location;
            answer.body = QByteArray(30, 'x');
            answer.padding = padding;
            answer.drip = std::chrono::milliseconds(drip);
            QTest::newRow(name) << answer << outcome;
        };
        row("long page", 200, {}, cleared, qint64(20) * 1024 * 1024);
        row("endless page", 299, {}, cleared, 0, 1000);
        row("error page", 300, {}, u"Cache-Request fuer % scheiterte mit Status 300."_s);
        row("redirect in a circle", 302, "/", failed + u"Zu viele Weiterleitungen."_s);
        row("redirect to http", 301, "http://127.0.0.1:9/",
            failed + u"Die Weiterleitung führt auf eine Adresse, die nicht mit https gesichert ist."_s);
    }

    void cacheIsClearedByTheSite() {
        QFETCH(Fault, answer);
        QFETCH(QString, outcome);
        trustSites({m_platform->sites().certificate()});
        m_platform->setFault(Endpoint::site, answer);
        const Project project = siteProject();
        const qsizetype before = m_platform->requests("/").size();
        m_state->activityLog()->clear();
        perform(HoverTarget::cache, project);
        QCOMPARE(messages(), (QStringList{u"Leere Cache fuer %1..."_s.arg(project.domain),
                                          outcome.replace(u'%', project.domain)}));
        QVERIFY(m_platform->requests("/").size() > before);
        QVERIFY(!m_platform->requests("/").last().headers.contains("authorization"));
    }

    void cacheRequestFollowsToTheSitesProperName() {
        sandbox::Faults none;
        const sandbox::Sites proper(m_home->filePath(u"proper"_s), none);
        Fault moved;
        moved.status = 308;
        moved.location =
            QByteArray("https://127.0.0.1:%/neu").replace('%', QByteArray::number(proper.port()));
        m_platform->setFault(Endpoint::site, moved);
        trustSites({m_platform->sites().certificate()});
        perform(HoverTarget::cache, siteProject());
        QVERIFY2(messages().last().contains("certificate"_L1), qPrintable(messages().last()));
        m_network->clearConnectionCache();
        trustSites({m_platform->sites().certificate(), proper.certificate()});
        perform(HoverTarget::cache, siteProject());
        QCOMPARE(messages().last(), u"Cache fuer %1 geleert."_s.arg(siteProject().domain));
        QCOMPARE(none.requests("/neu").size(), 1);
    }

    void browserTabFillsTheSearch() {
        struct Case {
            QString script, search, told;
        };

        const std::vector<Case> cases{
            {u"echo '  https://www.alpenhof.sandbox.test/x  '"_s, u"alpenhof.sandbox.test"_s,
             u"Suche mit Chrome-Domain gefuellt: alpenhof.sandbox.test"_s},
            {u"echo ' Google Chrome läuft nicht. ' >&2; exit 1"_s, u"vorher"_s,
             u"Chrome-Tab konnte nicht gelesen werden: Google Chrome läuft nicht."_s},
            {u"echo about:blank"_s, u"vorher"_s, u"Chrome-Tab-URL unbrauchbar: about:blank"_s}};
        for (const Case& each : cases) {
            HostSystem host = this->host();
            host.browserQuery = {u"/bin/sh"_s, {u"-c"_s, each.script}};
            start(host);
            m_state->setSearchText(u"vorher"_s);
            m_state->fillSearchFromChrome();
            QTRY_COMPARE(messages().last(), each.told);
            QCOMPARE(m_state->searchText(), each.search);
            QCOMPARE(m_state->lastError(), std::nullopt);
        }
    }
};

QTEST_GUILESS_MAIN(TestStateActions)
#include "tst_state_actions.moc"
