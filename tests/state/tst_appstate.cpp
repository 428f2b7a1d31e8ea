#include "StateFixture.h"

#include "System/Tables/MountTable.h"
#include "sandbox/ssh/SlowLine.h"

#include <QFile>
#include <QProcess>

using namespace Qt::StringLiterals;

namespace {
const QString erika = u"8f14e45f-erika"_s;
const QByteArray tokenPath = "/oauth/token";
} // namespace

/// The state with real services, from start to end.
class TestAppState : public StateFixture {
    Q_OBJECT

  private Q_SLOTS:

    void signedOutAtFirst() {
        QTRY_COMPARE(m_state->connectionStatus(), Status::failure);
        QCOMPARE(m_state->parts().loading.connectionFailure(), u"Bitte einloggen."_s);
        QCOMPARE(m_state->lastError(), std::nullopt);
        QCOMPARE(messages(), (QStringList{u"Projekte und Verbindungsstatus werden aktualisiert..."_s,
                                          u"Nicht eingeloggt. Bitte ueber Einstellungen anmelden."_s}));
        QVERIFY(m_state->globalHotkeyEnabled());
    }

    void signInFillsThePanelAndOutlivesTheProgram() {
        signIn("erika");
        QCOMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(m_state->projects().size(), 12);
        QCOMPARE(messages().last(), u"Verbunden als Erika Beispiel. 12 Projekte geladen."_s);
        QVERIFY(messages().contains(u"Account hinzugefuegt: Erika Beispiel."_s));
        m_state->setSearchText(u"backerei"_s);
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
        m_state->activityLog()->clear();
        auto first = m_state->parts().loading.refresh();
        await(m_state->parts().loading.refresh()); // overlaps, and shares the renewal
        await(std::move(first));
        QCOMPARE(m_platform->requests(tokenPath).size(), renewals + 1);
        QCOMPARE(m_state->connectionStatus(), Status::success);
        const QString token = m_state->parts().oauth.accessToken().value_or(QString());
        QVERIFY(messages().contains(u"Token erneuert (%1...). Wiederhole API-Aufruf."_s.arg(token.left(12))));
        QVERIFY(!messages().join(QString()).contains(token));
    }

    void refusedAgainEndsTheSessionWithoutASecondRenewal() {
        signIn("erika");
        Fault refused;
        refused.status = 403;
        m_platform->setFault(Endpoint::directory, refused);
        const qsizetype renewals = m_platform->requests(tokenPath).size();
        await(m_state->parts().loading.refresh());
        QCOMPARE(m_platform->requests(tokenPath).size(), renewals + 1);
        QCOMPARE(m_state->lastError(), std::optional(u"Sitzung abgelaufen. Bitte erneut einloggen."_s));
        QCOMPARE(messages().last(),
                 u"Token-Erneuerung fehlgeschlagen: Falscher Token oder keine Verbindung."_s);
        QVERIFY(m_state->projects().isEmpty());
    }

    void tokensThatShowUpLaterAreFound() {
        signIn("erika");
        const QString tokens = host().privateFolder + u"/tokens.json"_s;
        QVERIFY(QFile::rename(tokens, tokens + u".away"_s)); // as a locked keyring looks
        start();
        QTRY_COMPARE(m_state->parts().loading.connectionFailure(), u"Bitte einloggen."_s);
        QCOMPARE(m_state->accounts().size(), 1);
        QVERIFY(QFile::rename(tokens + u".away"_s, tokens));
        await(m_state->parts().loading.refresh());
        QCOMPARE(m_state->connectionStatus(), Status::success);
    }

    void accountsAreAddedSwitchedAndRemoved() {
        signIn("erika");
        signIn("jonas");
        QCOMPARE(m_state->accounts().size(), 2);
        QCOMPARE(m_state->userProfile()->name, u"Jonas Muster"_s);
        signIn("erika");
        QCOMPARE(m_state->accounts().size(), 2);
        QVERIFY(messages().contains(u"Account bereits vorhanden – wird aktiviert: Erika Beispiel."_s));
        await(m_state->parts().accounts.switchAccount(u"nobody"_s));
        QCOMPARE(messages().last(), u"Account-Wechsel fehlgeschlagen: keine Tokens gefunden."_s);
        QCOMPARE(m_state->activeAccountID(), std::optional(erika));

        // A slow answer for the former account must not show under the new one.
        Fault slow;
        slow.delay = std::chrono::milliseconds(300);
        m_platform->setFault(Endpoint::directory, slow);
        auto late = m_state->parts().loading.refresh();
        QTest::qWait(50);
        m_platform->setFault(Endpoint::directory, {});
        await(m_state->parts().accounts.switchAccount(u"c9f0f895-jonas"_s));
        await(std::move(late));
        QCOMPARE(m_state->userProfile()->name, u"Jonas Muster"_s);

        await(m_state->parts().accounts.removeAccount(u"c9f0f895-jonas"_s));
        QTRY_COMPARE(m_state->userProfile()->name, u"Erika Beispiel"_s);
        await(m_state->parts().accounts.removeAccount(erika));
        QCOMPARE(m_state->connectionStatus(), Status::idle);
        QVERIFY(m_state->accounts().isEmpty() && m_state->projects().isEmpty() && !m_state->userProfile());
        start();
        QVERIFY(m_state->accounts().isEmpty());
    }

    void olderLayoutIsTakenOver() {
        const sandbox::IssuedTokens tokens = m_platform->signIn(u"jonas"_s);
        const QString service = u"com.harvellon.HarvellonConnect.oauth"_s;
        m_keychain->save(tokens.accessToken.toUtf8(), service, u"access-token"_s);
        m_keychain->save(tokens.refreshToken.toUtf8(), service, u"refresh-token"_s);
        start();
        QTRY_COMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(m_state->activeAccountID(), std::optional(u"name:Jonas Muster"_s));
        QVERIFY(messages().contains(u"Bestehende Anmeldung migriert."_s));
        QCOMPARE(m_keychain->load(service, u"access-token"_s), std::nullopt);
        QCOMPARE(m_keychain->load(service, u"refresh-token"_s), std::nullopt);
    }

    void connectMountsAndOpensTheEditor() {
        signIn("erika");
        m_state->activityLog()->clear();
        for (const int index : {0, 1}) {
            const Project project = this->project(index);
            auto connecting = m_state->parts().connections.connect(project);
            await(m_state->parts().connections.connect(project)); // a double click
            await(std::move(connecting));
            const QString root = m_home->path() + u"/Harvellon/"_s + project.domain;
            const QString workspace =
                m_home->path() + u"/HarvellonConnect-VSCode/"_s + project.domain + u".code-workspace"_s;
            QCOMPARE(m_shell->opened.last(), u"code --new-window --disable-workspace-trust "_s + workspace);
            QFile file(workspace);
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QString folder = root + (index == 0 ? u"/web"_s : u"/public/fileadmin"_s);
            QVERIFY(file.readAll().contains('"' + folder.toUtf8() + '"'));
            QCOMPARE(messages().mid(2 * index),
                     (QStringList{u"Verbinde mit %1 als ssh%2..."_s.arg(project.domain, project.webspaceID),
                                  u"Gemountet: "_s + root}));
        }
        QCOMPARE(m_state->connectedDomains().size(), 2);

        const QString domain = project(0).domain;
        await(m_state->parts().connections.disconnect(domain, false));
        QCOMPARE(messages().mid(4),
                 (QStringList{u"Trenne %1..."_s.arg(domain), u"Unmounted %1."_s.arg(domain)}));
        QCOMPARE(m_state->connectedDomains().size(), 1);
        await(m_state->shutDown());
        QVERIFY(m_state->connectedDomains().isEmpty());
    }

    void missingDocumentFolderFallsBackToTheRoot() {
        signIn("erika");
        Project project = this->project(0);
        project.path += u"/log"_s;
        await(m_state->parts().connections.connect(project));
        QCOMPARE(messages().last(),
                 u"Unterordner web nicht gefunden – oeffne Projektwurzel fuer %1."_s.arg(project.domain));
        QVERIFY(m_shell->opened.last().startsWith("code "_L1));
    }

    void mountThatEndsIsTold() {
        signIn("erika");
        const Project project = this->project(0);
        await(m_state->parts().connections.connect(project));
        const auto session = m_state->parts().sshfsMounter.sessions().value(project.domain);
        QProcess::execute(u"/usr/bin/pkill"_s, {u"-KILL"_s, u"-f"_s, u"sshfs.*"_s + session.mountPoint});
        QTRY_COMPARE(m_ended, QStringList{project.domain});
        QVERIFY(messages().last().startsWith(u"Mount %1 unerwartet beendet (Exit "_s.arg(project.domain)));
        QVERIFY(m_state->connectedDomains().isEmpty());
    }

    void filesOnBothSidesOfAMountAreSpared() {
        signIn("erika");
        const Project project = this->project(0);
        const QString root = m_home->path() + u"/Harvellon/"_s + project.domain;
        QVERIFY(QDir().mkpath(root + u"/web"_s));
        await(m_state->parts().connections.connect(project));
        QVERIFY(m_state->lastError().value_or(QString()).startsWith(
            u"Im Ordner %1 liegen lokale Dateien"_s.arg(root)));
        QFile file(root + u"/web/neu.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        await(m_state->parts().connections.disconnect(project.domain, false));
        QCOMPARE(file.write("zu Ende geschrieben"), 19);
        file.close();
        QCOMPARE(QFile(project.path + u"/web/neu.txt"_s).size(), 19);
        const QStringList said = messages().mid(messages().size() - 2);
        QCOMPARE(said.first(), u"Unmounted %1."_s.arg(project.domain));
        QCOMPARE(m_state->lastError(), std::optional(said.last()));
        QVERIFY(said.last().startsWith(u"Auf %1 sind noch Dateien geöffnet."_s.arg(project.domain)));
        QVERIFY(QDir(root).exists(u"web"_s));
    }

    void killedProgramLeavesNothingThatTheNextOneMinds() {
        signIn("erika");
        for (const int index : {0, 1})
            await(m_state->parts().connections.connect(project(index)));
        const QString root = m_home->path() + u"/Harvellon/"_s;
        QFile inUse(root + project(1).domain + u"/public/index.php"_s);
        QVERIFY(inUse.open(QIODevice::ReadOnly));
        start(); // the state that mounted them was destroyed without finish(), as in a crash
        QTRY_VERIFY(
            messages().contains(u"Übrig gebliebenen Mount von %1 getrennt."_s.arg(project(0).domain)));
        QTRY_COMPARE(
            messages().filter(u"Ein Mount von %1 ist übrig geblieben"_s.arg(project(1).domain)).size(), 1);
        QVERIFY(!MountTable::lists(root + project(0).domain));
        QVERIFY(MountTable::lists(root + project(1).domain));
        await(m_state->parts().connections.connect(project(1)));
        QCOMPARE(m_state->connectedDomains(), QSet<QString>{project(1).domain});
    }

    void whatCannotBeSavedIsToldAndIsSavedLater() {
        QFile blocker(m_home->filePath(u"file"_s));
        QVERIFY(blocker.open(QIODevice::WriteOnly)); // a file as parent folder: writing fails for root too
        HostSystem host = this->host();
        host.preferencesFile = blocker.fileName() + u"/preferences.ini"_s;
        host.privateFolder = blocker.fileName() + u"/private"_s;
        start(host);
        signIn("erika");
        QCOMPARE(m_state->projects().size(), 12);
        const QString unsaved = u"Die Einstellungen konnten nicht gespeichert werden: "_s;
        QCOMPARE(messages().filter(u"Die Anmeldung konnte nicht gespeichert werden"_s).size(), 1);
        QCOMPARE(messages().filter(unsaved).size(), 1);
        QVERIFY(blocker.remove());
        m_state->setGlobalHotkeyEnabled(false);
        QCOMPARE(messages().filter(unsaved).size(), 1);
        QVERIFY(Preferences(host.preferencesFile).data(u"AccountsRegistry"_s));
    }

    void quittingAsksWhileSomethingIsBeingWritten() {
        signIn("erika");
        int quits = 0;
        const auto quit = [&quits] { ++quits; };
        await(m_state->parts().care.askToQuit(quit));
        QCOMPARE(quits, 1);
        sandbox::SlowLine line(m_platform->ssh().port());
        line.setQuality({std::chrono::milliseconds(20), 1'000'000});
        m_platform->ssh().letClientsUse(line.port());
        await(m_state->parts().connections.connect(project(0)));
        const QString mounted = m_home->path() + u"/Harvellon/"_s + project(0).domain;
        m_platform->ssh().letClientsUse(m_platform->ssh().port());
        QProcess writer;
        writer.start(u"/usr/bin/dd"_s,
                     {u"if=/dev/zero"_s, u"of="_s + mounted + u"/upload"_s, u"bs=64k"_s, u"count=40"_s});
        QTRY_VERIFY(QFileInfo(project(0).path + u"/upload"_s).size() > 0);
        await(m_state->parts().care.askToQuit(quit));
        QCOMPARE(quits, 1);
        QCOMPARE(m_state->guidance().value(u"title"_s).toString(), u"Auf 1 Projekt wird noch geschrieben"_s);
        m_state->answerGuidance(2);
        QTest::qWait(100);
        QCOMPARE(quits, 1);
        await(m_state->parts().care.askToQuit(quit));
        m_state->answerGuidance(1);
        QCOMPARE(quits, 2);
        await(m_state->parts().care.askToQuit(quit));
        m_state->answerGuidance(0);
        QCOMPARE(quits, 2);
        QTRY_VERIFY_WITH_TIMEOUT(quits == 3, 20'000);
        QCOMPARE(QFileInfo(project(0).path + u"/upload"_s).size(), 40 * 64 * 1024);
        QTRY_COMPARE(writer.state(), QProcess::NotRunning);
        QCOMPARE(writer.exitCode(), 0);
        await(m_state->shutDown());
    }
};

QTEST_GUILESS_MAIN(TestAppState)
#include "tst_appstate.moc"
