#include "StateFixture.h"

#include "System/MountTable.h"

#include <QFile>

namespace {
const QString erika = QStringLiteral("8f14e45f-erika");
const QByteArray tokenPath = "/oauth/token";
} // namespace

/// The state with real services, from start to end.
class TestAppState : public StateFixture {
    Q_OBJECT

  private Q_SLOTS:

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

    void filesOnBothSidesOfAMountAreSpared() {
        signIn("erika");
        const Project project = this->project(0);
        const QString root = m_home->path() + QStringLiteral("/Harvellon/") + project.domain;
        QVERIFY(QDir().mkpath(root + QStringLiteral("/web")));
        await(m_state->connectProject(project));
        QVERIFY(m_state->lastError().value_or(QString()).startsWith(
            QStringLiteral("Im Ordner %1 liegen lokale Dateien").arg(root)));
        QFile file(root + QStringLiteral("/web/neu.txt"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        await(m_state->disconnectProject(project.domain, false));
        QCOMPARE(file.write("zu Ende geschrieben"), 19);
        file.close();
        QCOMPARE(QFile(project.path + QStringLiteral("/web/neu.txt")).size(), 19);
        const QStringList said = messages().mid(messages().size() - 2);
        QCOMPARE(said.first(), QStringLiteral("Unmounted %1.").arg(project.domain));
        QCOMPARE(m_state->lastError(), std::optional(said.last()));
        QVERIFY(
            said.last().startsWith(QStringLiteral("Auf %1 sind noch Dateien geöffnet.").arg(project.domain)));
        QVERIFY(QDir(root).exists(QStringLiteral("web")));
    }

    void killedProgramLeavesNothingThatTheNextOneMinds() {
        signIn("erika");
        for (const int index : {0, 1})
            await(m_state->connectProject(project(index)));
        const QString root = m_home->path() + QStringLiteral("/Harvellon/");
        QFile inUse(root + project(1).domain + QStringLiteral("/public/index.php"));
        QVERIFY(inUse.open(QIODevice::ReadOnly));
        start(); // the state that had them is gone, and nobody has told it to end
        QTRY_VERIFY(messages().contains(
            QStringLiteral("Übrig gebliebenen Mount von %1 getrennt.").arg(project(0).domain)));
        QTRY_COMPARE(
            messages()
                .filter(QStringLiteral("Ein Mount von %1 ist übrig geblieben").arg(project(1).domain))
                .size(),
            1);
        QVERIFY(!MountTable::lists(root + project(0).domain));
        QVERIFY(MountTable::lists(root + project(1).domain));
        await(m_state->connectProject(project(1)));
        QCOMPARE(m_state->connectedDomains(), QSet<QString>{project(1).domain});
    }

    void whatCannotBeSavedIsToldAndIsSavedLater() {
        QFile blocker(m_home->filePath(QStringLiteral("file")));
        QVERIFY(blocker.open(QIODevice::WriteOnly)); // below it nothing can be written, whoever we are
        HostSystem host = this->host();
        host.preferencesFile = blocker.fileName() + QStringLiteral("/preferences.ini");
        host.privateFolder = blocker.fileName() + QStringLiteral("/private");
        start(host);
        signIn("erika");
        QCOMPARE(m_state->projects().size(), 12);
        const QString unsaved = QStringLiteral("Die Einstellungen konnten nicht gespeichert werden: ");
        QCOMPARE(messages().filter(QStringLiteral("Die Anmeldung konnte nicht gespeichert werden")).size(),
                 1);
        QCOMPARE(messages().filter(unsaved).size(), 1);
        QVERIFY(blocker.remove());
        m_state->setGlobalHotkeyEnabled(false);
        QCOMPARE(messages().filter(unsaved).size(), 1);
        QVERIFY(Preferences(host.preferencesFile).data(QStringLiteral("AccountsRegistry")));
    }
};

QTEST_GUILESS_MAIN(TestAppState)
#include "tst_appstate.moc"
