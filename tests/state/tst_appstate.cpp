#include "State/AppState.h"
#include "sandbox/ProjectTrees.h"
#include "sandbox/Sandbox.h"
#include "support/Await.h"
#include "support/DesktopShell.h"

#include <QElapsedTimer>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using sandbox::Fault;
using Endpoint = sandbox::Sandbox::Endpoint;
using Status = ConnectionStatus::Case;

namespace {
const QString erika = QStringLiteral("8f14e45f-erika");
const QByteArray directoryPath = "/api/json/applications";
const QByteArray tokenPath = "/oauth/token";
} // namespace

/// The state with real services, from start to end.
class TestAppState : public QObject {
    Q_OBJECT

    QTemporaryDir m_platformFolder;
    std::unique_ptr<sandbox::Sandbox> m_platform;
    QByteArray m_searchPath;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<DesktopShell> m_shell;
    std::unique_ptr<KeychainStore> m_keychain;
    std::unique_ptr<Preferences> m_preferences;
    std::unique_ptr<QNetworkAccessManager> m_network;
    std::unique_ptr<AppState> m_state;
    QString m_identity; ///< whom the browser chooses
    QStringList m_ended;
    QString m_copied;

    [[nodiscard]] HostSystem host() const {
        HostSystem host = HostSystem::linuxDesktop(m_home->path());
        host.preferencesFile = m_home->filePath(QStringLiteral("preferences.ini"));
        host.temporaryFolder = m_home->path();
        host.usesKeyring = false;
        return host;
    }

    void start() { start(host()); }

    void start(const HostSystem& host) {
        m_state.reset();
        m_keychain = std::make_unique<KeychainStore>(host);
        m_preferences = std::make_unique<Preferences>(host.preferencesFile);
        DesktopCommands desktop;
        desktop.togglePanel = [] {};
        desktop.copyText = [this](const QString& text) { m_copied = text; };
        desktop.tellMountEnded = [this](const QString& domain) { m_ended.append(domain); };
        m_state = std::make_unique<AppState>(AppServices{host, ServerAddress::checked(m_platform->server()),
                                                         *m_shell, *m_keychain, *m_preferences, *m_network},
                                             desktop);
        settle();
    }

    void settle() {
        QTRY_VERIFY(m_state->connectionStatus() == Status::success ||
                    m_state->connectionStatus() == Status::failure);
        QTRY_VERIFY(!m_state->isLoading());
    }

    void signIn(const char* identity) {
        m_identity = QString::fromLatin1(identity);
        await(m_state->addAccount());
    }

    [[nodiscard]] QStringList messages() const {
        QStringList texts;
        for (const ActivityLogEntry& entry : m_state->activityLog()->entries())
            texts.append(entry.message);
        return texts;
    }

    [[nodiscard]] Project project(int index) const {
        const QString domain = m_platform->people().at(0).projects.at(index).domain;
        for (const Project& project : m_state->projects()) {
            if (project.domain == domain)
                return project;
        }
        qFatal("no such project");
    }

  private Q_SLOTS:

    void initTestCase() {
        m_searchPath = qgetenv("PATH");
        m_platform = std::make_unique<sandbox::Sandbox>(sandbox::Options{m_platformFolder.path(), 0, true});
        qputenv("PATH", m_platform->ssh().binFolder().toUtf8() + ':' + m_searchPath);
    }

    void init() {
        m_home = std::make_unique<QTemporaryDir>();
        m_network = std::make_unique<QNetworkAccessManager>();
        m_shell = std::make_unique<DesktopShell>();
        m_shell->browser = [this](const QString& address) {
            if (address.startsWith(QLatin1String("http://127.0.0.1")))
                m_network->get(QNetworkRequest(QUrl(address + QStringLiteral("&identity=") + m_identity)));
        };
        m_ended.clear();
        start();
    }

    void cleanup() {
        m_platform->setFault(Endpoint::directory, {});
        m_platform->setFault(Endpoint::token, {});
        m_platform->ssh().thaw();
        if (m_state)
            await(m_state->shutDown());
        m_state.reset();
    }

    void cleanupTestCase() {
        m_platform.reset();
        qputenv("PATH", m_searchPath);
    }

    void signedOutAtFirst() {
        QTRY_COMPARE(m_state->connectionStatus(), Status::failure);
        QCOMPARE(m_state->connectionFailure(), QStringLiteral("Bitte einloggen."));
        QCOMPARE(m_state->lastError(), std::nullopt);
        QCOMPARE(messages(),
                 (QStringList{QStringLiteral("Projekte und Verbindungsstatus werden aktualisiert..."),
                              QStringLiteral("Nicht eingeloggt. Bitte ueber Einstellungen anmelden.")}));
        QVERIFY(m_state->globalHotkeyEnabled());
    }

    void signInFillsThePanelAndOutlivesTheProgram() {
        signIn("erika");
        QCOMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(m_state->projects().size(), 12);
        QCOMPARE(messages().last(), QStringLiteral("Verbunden als Erika Beispiel. 12 Projekte geladen."));
        QVERIFY(messages().contains(QStringLiteral("Account hinzugefuegt: Erika Beispiel.")));
        m_state->setSearchText(QStringLiteral("backerei"));
        QCOMPARE(m_state->visibleProjects()->count(), 1);
        m_state->setGlobalHotkeyEnabled(false);

        start();
        QTRY_COMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(m_state->activeAccountID(), std::optional(erika));
        QVERIFY(!m_state->globalHotkeyEnabled());
    }

    void refusedTokenIsRenewedOnce() {
        signIn("erika");
        m_platform->expireTokens();
        const qsizetype renewals = m_platform->requests(tokenPath).size();
        m_state->clearActivityLog();
        auto first = m_state->refresh();
        await(m_state->refresh()); // overlaps, and shares the renewal
        await(std::move(first));
        QCOMPARE(m_platform->requests(tokenPath).size(), renewals + 1);
        QCOMPARE(m_state->connectionStatus(), Status::success);
        const QString token = m_state->oauth().accessToken().value_or(QString());
        QVERIFY(messages().contains(
            QStringLiteral("Token erneuert (%1...). Wiederhole API-Aufruf.").arg(token.left(12))));
        QVERIFY(!messages().join(QString()).contains(token));
    }

    void refusedAgainEndsTheSessionWithoutASecondRenewal() {
        signIn("erika");
        Fault refused;
        refused.status = 403;
        m_platform->setFault(Endpoint::directory, refused);
        const qsizetype renewals = m_platform->requests(tokenPath).size();
        await(m_state->refresh());
        QCOMPARE(m_platform->requests(tokenPath).size(), renewals + 1);
        QCOMPARE(m_state->lastError(),
                 std::optional(QStringLiteral("Sitzung abgelaufen. Bitte erneut einloggen.")));
        QCOMPARE(messages().last(),
                 QStringLiteral("Token-Erneuerung fehlgeschlagen: Falscher Token oder keine Verbindung."));
        QVERIFY(m_state->projects().isEmpty());
    }

    void otherFailuresAreToldAsTheyAre() {
        signIn("erika");
        Fault broken;
        broken.status = 500;
        m_platform->setFault(Endpoint::directory, broken);
        await(m_state->refresh());
        const QString reason = QStringLiteral("API lieferte eine unerwartete Antwort (500).");
        QCOMPARE(m_state->lastError(), std::optional(reason));
        QCOMPARE(m_state->connectionFailure(), reason);
        QCOMPARE(messages().last(), QStringLiteral("Projekte konnten nicht geladen werden: ") + reason);
        m_platform->setFault(Endpoint::directory, {});
        await(m_state->refresh());
        QCOMPARE(m_state->connectionStatus(), Status::success);
    }

    void tokensThatShowUpLaterAreFound() {
        signIn("erika");
        const QString tokens = host().privateFolder + QStringLiteral("/tokens.json");
        QVERIFY(QFile::rename(tokens, tokens + QStringLiteral(".away"))); // as a locked keyring looks
        start();
        QTRY_COMPARE(m_state->connectionFailure(), QStringLiteral("Bitte einloggen."));
        QCOMPARE(m_state->accounts().size(), 1);
        QVERIFY(QFile::rename(tokens + QStringLiteral(".away"), tokens));
        await(m_state->refresh());
        QCOMPARE(m_state->connectionStatus(), Status::success);
    }

    void accountsAreAddedSwitchedAndRemoved() {
        signIn("erika");
        signIn("jonas");
        QCOMPARE(m_state->accounts().size(), 2);
        QCOMPARE(m_state->userProfile()->name, QStringLiteral("Jonas Muster"));
        signIn("erika");
        QCOMPARE(m_state->accounts().size(), 2);
        QVERIFY(messages().contains(
            QStringLiteral("Account bereits vorhanden – wird aktiviert: Erika Beispiel.")));
        await(m_state->switchAccount(QStringLiteral("nobody")));
        QCOMPARE(messages().last(), QStringLiteral("Account-Wechsel fehlgeschlagen: keine Tokens gefunden."));
        QCOMPARE(m_state->activeAccountID(), std::optional(erika));

        // A slow answer for the former account must not show under the new one.
        Fault slow;
        slow.delay = std::chrono::milliseconds(300);
        m_platform->setFault(Endpoint::directory, slow);
        auto late = m_state->refresh();
        QTest::qWait(50);
        m_platform->setFault(Endpoint::directory, {});
        await(m_state->switchAccount(QStringLiteral("c9f0f895-jonas")));
        await(std::move(late));
        QCOMPARE(m_state->userProfile()->name, QStringLiteral("Jonas Muster"));

        await(m_state->removeAccount(QStringLiteral("c9f0f895-jonas")));
        QTRY_COMPARE(m_state->userProfile()->name, QStringLiteral("Erika Beispiel"));
        await(m_state->removeAccount(erika));
        QCOMPARE(m_state->connectionStatus(), Status::idle);
        QVERIFY(m_state->accounts().isEmpty() && m_state->projects().isEmpty() && !m_state->userProfile());
        start();
        QVERIFY(m_state->accounts().isEmpty());
    }

    void olderLayoutIsTakenOver() {
        const sandbox::IssuedTokens tokens = m_platform->signIn(QStringLiteral("jonas"));
        const QString service = QStringLiteral("com.harvellon.HarvellonConnect.oauth");
        m_keychain->save(tokens.accessToken.toUtf8(), service, QStringLiteral("access-token"));
        m_keychain->save(tokens.refreshToken.toUtf8(), service, QStringLiteral("refresh-token"));
        start();
        QTRY_COMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(m_state->activeAccountID(), std::optional(QStringLiteral("name:Jonas Muster")));
        QVERIFY(messages().contains(QStringLiteral("Bestehende Anmeldung migriert.")));
        QCOMPARE(m_keychain->load(service, QStringLiteral("access-token")), std::nullopt);
        QCOMPARE(m_keychain->load(service, QStringLiteral("refresh-token")), std::nullopt);
    }

    void connectMountsAndOpensTheEditor() {
        signIn("erika");
        m_state->clearActivityLog();
        for (const int index : {0, 1}) {
            const Project project = this->project(index);
            auto connecting = m_state->connectProject(project);
            await(m_state->connectProject(project)); // a double click
            await(std::move(connecting));
            const QString root = m_home->path() + QStringLiteral("/Harvellon/") + project.domain;
            const QString workspace = m_home->path() + QStringLiteral("/HarvellonConnect-VSCode/") +
                                      project.domain + QStringLiteral(".code-workspace");
            QCOMPARE(m_shell->opened.last(),
                     QStringLiteral("code --new-window --disable-workspace-trust ") + workspace);
            QFile file(workspace);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString folder =
                root + (index == 0 ? QStringLiteral("/web") : QStringLiteral("/public/fileadmin"));
            QVERIFY(file.readAll().contains('"' + folder.toUtf8() + '"'));
            QCOMPARE(
                messages().mid(2 * index),
                (QStringList{
                    QStringLiteral("Verbinde mit %1 als ssh%2...").arg(project.domain, project.webspaceID),
                    QStringLiteral("Gemountet: ") + root}));
        }
        QCOMPARE(m_state->connectedDomains().size(), 2);

        const QString domain = project(0).domain;
        await(m_state->disconnectProject(domain, false));
        QCOMPARE(messages().mid(4), (QStringList{QStringLiteral("Trenne %1...").arg(domain),
                                                 QStringLiteral("Unmounted %1.").arg(domain)}));
        QCOMPARE(m_state->connectedDomains().size(), 1);
        await(m_state->shutDown());
        QVERIFY(m_state->connectedDomains().isEmpty());
    }

    void failedConnectIsToldAndForgotten() {
        signIn("erika");
        m_platform->ssh().acceptKey(false);
        const Project project = this->project(0);
        await(m_state->connectProject(project));
        m_platform->ssh().acceptKey(true);
        const QString reason =
            MounterError(MounterError::Case::authenticationFailed, project.domain).description();
        QCOMPARE(m_state->lastError(), std::optional(reason));
        QCOMPARE(messages().last(),
                 QStringLiteral("Mount fuer %1 fehlgeschlagen: %2").arg(project.domain, reason));
        QVERIFY(m_state->connectedDomains().isEmpty());
        await(m_state->connectProject(project));
        QCOMPARE(m_state->connectedDomains().size(), 1);
        QCOMPARE(m_state->lastError(), std::nullopt);
    }

    void missingDocumentFolderFallsBackToTheRoot() {
        signIn("erika");
        Project project = this->project(0);
        project.path += QStringLiteral("/log");
        await(m_state->connectProject(project));
        QCOMPARE(messages().last(),
                 QStringLiteral("Unterordner web nicht gefunden – oeffne Projektwurzel fuer %1.")
                     .arg(project.domain));
        QVERIFY(m_shell->opened.last().startsWith(QLatin1String("code ")));
    }

    void missingSshfsIsExplained() {
        HostSystem host = this->host();
        host.sshfsCandidates = {QStringLiteral("/none/sshfs")};
        start(host);
        signIn("erika");
        const Project project = this->project(0);
        await(m_state->connectProject(project));
        await(m_state->connectProject(project)); // one alert at a time
        QCOMPARE(m_state->lastError(), std::optional(QStringLiteral("sshfs ist nicht installiert.")));
        QCOMPARE(m_state->guidanceMap().value(QStringLiteral("buttons")).toStringList().last(),
                 QStringLiteral("Abbrechen"));
        m_state->answerGuidance(0);
        QCOMPARE(m_copied, QStringLiteral("sudo apt install sshfs"));
        QVERIFY(m_state->guidanceMap().isEmpty());
    }

    void mountThatEndsIsTold() {
        signIn("erika");
        const Project project = this->project(0);
        await(m_state->connectProject(project));
        const auto session = m_state->sshfsMounter().sessions().value(project.domain);
        QProcess::execute(QStringLiteral("/usr/bin/pkill"), {QStringLiteral("-KILL"), QStringLiteral("-f"),
                                                             QStringLiteral("sshfs.*") + session.mountPoint});
        QTRY_COMPARE(m_ended, QStringList{project.domain});
        QVERIFY(messages().last().startsWith(
            QStringLiteral("Mount %1 unerwartet beendet (Exit ").arg(project.domain)));
        QVERIFY(m_state->connectedDomains().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestAppState)
#include "tst_appstate.moc"
