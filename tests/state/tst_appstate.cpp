#include "StateFixture.h"

#include "System/Tables/MountTable.h"
#include "sandbox/ssh/SlowLine.h"

#include <QDir>
#include <QProcess>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {
const QString erika = u"8f14e45f-erika"_s;
const QString jonas = u"c9f0f895-jonas"_s;
const QByteArray tokenPath = "/oauth/token";
} // namespace

/// The state with real services, from start to end, and where it tells failures.
class TestAppState : public StateFixture {
    Q_OBJECT

  private Q_SLOTS:

    void signInFillsThePanelAndOutlivesTheProgram() {
        QCOMPARE(m_state->parts().loading.connectionFailure(), u"Bitte einloggen."_s);
        QCOMPARE(m_state->lastError(), std::nullopt);
        QCOMPARE(messages(), (QStringList{u"Projekte und Verbindungsstatus werden aktualisiert..."_s,
                                          u"Nicht eingeloggt. Bitte ueber Einstellungen anmelden."_s}));
        QVERIFY(m_state->globalHotkeyEnabled());
        signIn("erika");
        QCOMPARE(m_state->connectionStatus(), Status::success);
        QCOMPARE(messages().last(), u"Verbunden als Erika Beispiel. 12 Projekte geladen."_s);
        QVERIFY(messages().contains(u"Account hinzugefuegt: Erika Beispiel."_s));
        m_state->setGlobalHotkeyEnabled(false);
        start();
        QCOMPARE(m_state->projects().size(), 12);
        QCOMPARE(m_state->activeAccountID(), std::optional(erika));
        QVERIFY(!m_state->globalHotkeyEnabled());
    }

    void refusedTokenIsRenewedOnce() {
        signIn("erika");
        m_platform->expireTokens();
        const qsizetype renewals = m_platform->requests(tokenPath).size();
        m_state->activityLog()->clear();
        auto first = m_state->parts().loading.refresh();
        load(); // overlaps, and shares the renewal
        await(std::move(first));
        QCOMPARE(m_platform->requests(tokenPath).size(), renewals + 1);
        QCOMPARE(m_state->connectionStatus(), Status::success);
        const QString token = m_state->parts().oauth.accessToken().value_or(QString());
        QVERIFY(messages().contains(u"Token erneuert (%1...). Wiederhole API-Aufruf."_s.arg(token.left(12))));
        QVERIFY(!messages().join(QString()).contains(token));
        connectTo(0);
        m_platform->expireTokens();
        auto loading = m_state->parts().loading.refresh();
        await(m_state->shutDown()); // no renewal begins any more, also while the mount is taken down
        await(std::move(loading));
        QCOMPARE(m_platform->requests(tokenPath).size(), renewals + 1);
    }

    void refusedAgainEndsTheSessionWithoutASecondRenewal() {
        signIn("erika");
        answer(Endpoint::directory, 403);
        const qsizetype renewals = m_platform->requests(tokenPath).size();
        load();
        QCOMPARE(m_platform->requests(tokenPath).size(), renewals + 1);
        QCOMPARE(m_state->lastError(), std::optional(u"Sitzung abgelaufen. Bitte erneut einloggen."_s));
        QCOMPARE(messages().last(),
                 u"Token-Erneuerung fehlgeschlagen: Falscher Token oder keine Verbindung."_s);
        QVERIFY(m_state->projects().isEmpty());
    }

    void failedLoginIsToldUntilTheNextOne() {
        answer(Endpoint::token, 500);
        signIn("erika");
        const QString failure = u"Token-Austausch fehlgeschlagen: HTTP 500"_s;
        QCOMPARE(messages().last(), u"Login fehlgeschlagen: "_s + failure);
        load(); // a load is no attempt to sign in
        QCOMPARE(m_state->accountError(), failure);
        m_state->dismissAccountError();
        QCOMPARE(m_state->accountError(), QString());
    }

    void cancelledLoginLeavesNothing() {
        m_shell->browser = {}; // the user has not chosen anybody yet
        m_state->addAccount();
        QTRY_VERIFY(!m_shell->opened.isEmpty());
        m_state->copyLoginAddress();
        QVERIFY(m_copied.contains(u"code_challenge="_s));
        QVERIFY(messages().filter(u"state="_s).isEmpty());
        m_state->cancelLogin();
        QTRY_VERIFY(!m_state->isAuthenticating());
        QTest::qWait(50);
        QCOMPARE(m_state->accountError(), QString()); // who cancels knows why
        m_copied.clear();
        m_state->copyLoginAddress();
        QCOMPARE(m_copied, QString()); // nobody listens there any more
    }

    void accountsAreAddedSwitchedAndRemoved() {
        signIn("erika");
        signIn("jonas");
        QCOMPARE(m_state->userProfile()->name, u"Jonas Muster"_s);
        signIn("erika");
        QCOMPARE(m_state->accounts().size(), 2);
        QVERIFY(messages().contains(u"Account bereits vorhanden – wird aktiviert: Erika Beispiel."_s));
        await(m_state->parts().accounts.switchAccount(u"nobody"_s));
        QCOMPARE(messages().last(), u"Account-Wechsel fehlgeschlagen: keine Tokens gefunden."_s);
        QCOMPARE(m_state->accountError(), messages().last());
        m_state->removeAccount(u"nobody"_s);
        QCOMPARE(m_state->accountError(), QString());
        QCOMPARE(m_state->activeAccountID(), std::optional(erika));

        // The former account, and a slow answer for it, must not show under the new one.
        answer(Endpoint::directory, 0, 800ms);
        auto late = m_state->parts().loading.refresh();
        QTest::qWait(50);
        answer(Endpoint::directory, 0, 300ms);
        auto switching = m_state->parts().accounts.switchAccount(jonas);
        QTRY_COMPARE(m_state->activeAccountID(), std::optional(jonas));
        QVERIFY(m_state->isLoading() && m_state->projects().isEmpty() && !m_state->signedIn());
        await(std::move(switching));
        await(std::move(late));
        QCOMPARE(m_state->userName(), u"Jonas Muster"_s);
        m_platform->setFault(Endpoint::directory, {});

        m_state->activityLog()->clear();
        await(m_state->parts().accounts.removeAccount(jonas));
        QTRY_COMPARE(messages().value(2), u"Verbunden als Erika Beispiel. 12 Projekte geladen."_s);
        QCOMPARE(messages().first(), u"Account entfernt."_s);
        await(m_state->parts().accounts.removeAccount(erika));
        QCOMPARE(m_state->connectionStatus(), Status::idle);
        QVERIFY(m_state->accounts().isEmpty() && m_state->projects().isEmpty() && !m_state->userProfile());
        start();
        QVERIFY(m_state->accounts().isEmpty());
    }

    void connectMountsAndOpensTheEditor() {
        signIn("erika");
        m_state->activityLog()->clear();
        m_state->setQuietWorkspace(true);
        const Project project = this->project(1);
        auto connecting = m_state->parts().connections.connect(project);
        connectTo(project); // a double click
        await(std::move(connecting));
        const QString workspace =
            m_home->path() + u"/HarvellonConnect-VSCode/"_s + project.domain + u".code-workspace"_s;
        QCOMPARE(m_shell->opened.last(), u"code --new-window --disable-workspace-trust "_s + workspace);
        QVERIFY(content(workspace).contains('"' + mountPoint(1).toUtf8() + "/public/fileadmin\""));
        QVERIFY(content(workspace).contains("\"git.autorefresh\": false"));
        disconnectFrom(1);
        QCOMPARE(messages(),
                 (QStringList{u"Verbinde mit %1 als ssh%2..."_s.arg(project.domain, project.webspaceID),
                              u"Gemountet: "_s + mountPoint(1), u"Trenne %1..."_s.arg(project.domain),
                              u"Unmounted %1."_s.arg(project.domain)}));
        QVERIFY(m_state->connectedDomains().isEmpty());
    }

    void whatIsMissingAtAConnectIsTold() {
        HostSystem host = this->host();
        host.editorLaunchers.clear();
        m_shell->hasEditor = false;
        start(host);
        signIn("erika");
        const QString missing = u"VS Code wurde nicht gefunden."_s;
        connectTo(0);
        QCOMPARE(messages().last(), missing);
        m_state->activityLog()->clear();
        perform(HoverTarget::vscode, project(0));
        QCOMPARE(messages(), QStringList(missing));
        disconnectFrom(0);
        m_shell->hasEditor = true;
        Project project = this->project(0);
        project.path += u"/log"_s; // has no document folder
        connectTo(project);
        QCOMPARE(messages().last(),
                 u"Unterordner web nicht gefunden – oeffne Projektwurzel fuer %1."_s.arg(project.domain));
        QVERIFY(m_shell->opened.last().startsWith("code "_L1));
    }

    void filesOnBothSidesOfAMountAreTold() {
        signIn("erika");
        const QString root = mountPoint(0);
        QVERIFY(QDir().mkpath(root + u"/web"_s));
        connectTo(0);
        QVERIFY(m_state->lastErrorText().startsWith(u"Im Ordner %1 liegen lokale Dateien"_s.arg(root)));
        QFile file(root + u"/web/neu.txt"_s);
        QVERIFY(file.open(QIODevice::WriteOnly));
        disconnectFrom(0);
        QCOMPARE(m_state->lastErrorText(), messages().last());
        QVERIFY(messages().last().startsWith(u"Auf %1 sind noch Dateien geöffnet."_s.arg(project(0).domain)));
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
        const QString failed = u"Die Anmeldung konnte nicht gespeichert werden"_s;
        const QString unsaved = u"Die Einstellungen konnten nicht gespeichert werden: "_s;
        QCOMPARE(messages().filter(failed).size(), 1);
        QCOMPARE(messages().filter(unsaved).size(), 1);
        QVERIFY(blocker.remove());
        m_state->setGlobalHotkeyEnabled(false);
        QCOMPARE(messages().filter(unsaved).size(), 1);
        QVERIFY(Preferences(host.preferencesFile).data(u"AccountsRegistry"_s));
        QVERIFY(m_state->accountError().startsWith(failed));
        load();
        QTRY_COMPARE(m_state->accountError(), QString());
        QVERIFY(QFile::exists(host.privateFolder + u"/tokens.json"_s));
    }

    void longErrorsAreBounded() {
        const QString flood = QString(20'000, u'x');
        m_state->parts().report.log(flood, ActivityLogLevel::error);
        m_state->parts().report.setLastError(flood);
        for (const QString& told : {messages().last(), m_state->lastErrorText()}) {
            QCOMPARE(told.size(), 8 * 1024 + 1);
            QVERIFY(told.endsWith(u'…'));
        }
        m_state->access()->offer({u"a.example"_s, {}, {}, {}}, flood);
        QVERIFY(m_state->access()->isOffered());
    }

    void quittingAsksWhileSomethingIsBeingWritten() {
        signIn("erika");
        int quits = 0;
        const auto quit = [&quits] { ++quits; };
        await(m_state->parts().care.askToQuit(quit));
        QCOMPARE(quits, 1);
        sandbox::SlowLine line(m_platform->ssh().port());
        line.setQuality({20ms, 1'000'000});
        m_platform->ssh().letClientsUse(line.port());
        connectTo(0);
        m_platform->ssh().letClientsUse(m_platform->ssh().port());
        QProcess writer;
        writer.start(u"/usr/bin/dd"_s,
                     {u"if=/dev/zero"_s, u"of=%1/upload"_s.arg(mountPoint(0)), u"bs=64k"_s, u"count=40"_s});
        const QString upload = project(0).path + u"/upload"_s;
        QTRY_VERIFY(QFileInfo(upload).size() > 0);
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
        QCOMPARE(QFileInfo(upload).size(), 40 * 64 * 1024);
        QTRY_COMPARE(writer.state(), QProcess::NotRunning);
        QCOMPARE(writer.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(TestAppState)
#include "tst_appstate.moc"
