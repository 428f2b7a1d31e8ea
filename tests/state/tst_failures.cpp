#include "StateFixture.h"

#include <QElapsedTimer>
#include <QSslCertificate>
#include <QSslConfiguration>

using namespace Qt::StringLiterals;

namespace {
const QString jonas = u"c9f0f895-jonas"_s;
} // namespace

/// Where failures are told, besides the line of the activity log.
class TestFailures : public StateFixture {
    Q_OBJECT

    void trustSites() {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setCaCertificates(QSslCertificate::fromPath(m_platform->sites().certificate()));
        QSslConfiguration::setDefaultConfiguration(configuration);
    }

  private Q_SLOTS:

    void failedLoginIsToldUntilTheNextOne() {
        Fault refused;
        refused.status = 500;
        m_platform->setFault(Endpoint::token, refused);
        signIn("erika");
        const QString failure = u"Token-Austausch fehlgeschlagen: HTTP 500"_s;
        QCOMPARE(m_state->accountError(), failure);
        QCOMPARE(messages().last(), u"Login fehlgeschlagen: "_s + failure);
        await(m_state->parts().loading.refresh()); // a load is no attempt to sign in
        QCOMPARE(m_state->accountError(), failure);
        m_platform->setFault(Endpoint::token, {});
        signIn("erika");
        QCOMPARE(m_state->accountError(), QString());

        m_state->switchAccount(u"nobody"_s);
        QTRY_COMPARE(m_state->accountError(), u"Account-Wechsel fehlgeschlagen: keine Tokens gefunden."_s);
        m_state->dismissAccountError();
        QCOMPARE(m_state->accountError(), QString());
    }

    void tokensThatCannotBeStoredAreTold() {
        QFile blocker(m_home->filePath(u"file"_s));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        HostSystem host = this->host();
        host.privateFolder = blocker.fileName() + u"/private"_s;
        start(host);
        signIn("erika");
        QVERIFY(m_state->accountError().startsWith(u"Die Anmeldung konnte nicht gespeichert werden"_s));
        m_state->removeAccount(u"8f14e45f-erika"_s);
        QCOMPARE(m_state->accountError(), QString());
    }

    void addressOfALoginCanBeCopied_data() {
        QTest::addColumn<bool>("browserOpens");
        QTest::newRow("browser") << true;
        QTest::newRow("no browser") << false;
    }

    void addressOfALoginCanBeCopied() {
        QFETCH(bool, browserOpens);
        m_shell->opens = browserOpens;
        m_shell->browser = {}; // the user has not chosen anybody yet
        m_state->addAccount();
        QTRY_VERIFY(!m_shell->opened.isEmpty());
        m_state->copyLoginAddress();
        QCOMPARE(m_copied, m_shell->opened.last());
        QVERIFY(m_copied.contains(u"code_challenge="_s));
        QTest::qWait(50);
        QCOMPARE(m_state->accountError().startsWith(u"Der Browser konnte nicht geöffnet werden."_s),
                 !browserOpens);
        QVERIFY(messages().filter(u"state="_s).isEmpty());
        m_state->cancelLogin();
        QTRY_VERIFY(!m_state->isAuthenticating());
        QTest::qWait(50);
        QCOMPARE(m_state->accountError(), QString()); // who cancels knows why
        m_copied.clear();
        m_state->copyLoginAddress();
        QCOMPARE(m_copied, QString()); // nobody listens there any more
    }

    void formerAccountIsNotShownWhileTheOtherOneLoads() {
        signIn("jonas");
        signIn("erika");
        Fault slow;
        slow.delay = std::chrono::milliseconds(500);
        m_platform->setFault(Endpoint::directory, slow);
        auto switching = m_state->parts().accounts.switchAccount(jonas);
        QTRY_COMPARE(m_state->activeAccountID(), std::optional(jonas));
        QVERIFY(m_state->isLoading());
        QVERIFY(m_state->projects().isEmpty());
        QVERIFY(!m_state->signedIn());
        await(std::move(switching));
        QCOMPARE(m_state->userName(), u"Jonas Muster"_s);
    }

    void cacheIsClearedWhateverTheBody_data() {
        QTest::addColumn<qint64>("padding");
        QTest::addColumn<int>("drip");
        QTest::newRow("long") << qint64(20) * 1024 * 1024 << 0;
        QTest::newRow("endless") << qint64(0) << 1000;
    }

    void cacheIsClearedWhateverTheBody() {
        QFETCH(qint64, padding);
        QFETCH(int, drip);
        trustSites();
        Fault answer;
        answer.body = QByteArray(30, 'x');
        answer.padding = padding;
        answer.drip = std::chrono::milliseconds(drip);
        m_platform->setFault(Endpoint::site, answer);
        const Project site{u"127.0.0.1:%1"_s.arg(m_platform->sites().port()), std::nullopt, u"1"_s, u"/"_s,
                           ProjectType::ssh};
        QElapsedTimer timer;
        timer.start();
        await(m_state->parts().actions.perform(HoverTarget::cache, site, false));
        QCOMPARE(messages().last(), u"Cache fuer %1 geleert."_s.arg(site.domain));
        QVERIFY(timer.elapsed() < 5000);
    }

    void longErrorsAreBounded() {
        const QString flood = QString(20'000, u'x');
        m_state->parts().report.log(flood, ActivityLogLevel::error);
        m_state->parts().report.setLastError(flood);
        for (const QString& told : {messages().last(), m_state->lastErrorText()}) {
            QCOMPARE(told.size(), 8 * 1024 + 1);
            QVERIFY(told.endsWith(u'…'));
        }
    }

    void missingEditorIsTold() {
        HostSystem host = this->host();
        host.editorLaunchers.clear();
        m_shell->hasEditor = false;
        start(host);
        signIn("erika");
        const Project project = this->project(0);
        await(m_state->parts().connections.connect(project));
        const QString missing = u"VS Code wurde nicht gefunden."_s;
        QCOMPARE(messages().last(), missing);
        m_state->activityLog()->clear();
        await(m_state->parts().actions.perform(HoverTarget::vscode, project, false));
        QCOMPARE(messages(), QStringList(missing));
    }

    void systemErrorsOfAMountAreToldOnce() {
        HostSystem host = this->host();
        QFile script(m_home->filePath(u"sshfs"_s));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\necho SSHFS version 3\n");
        script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        script.close();
        host.sshfsCandidates = {script.fileName()};
        start(host);
        signIn("erika");
        QFile blocker(m_home->filePath(u"Harvellon"_s));
        QVERIFY(blocker.open(QIODevice::WriteOnly)); // a file where the mount points belong
        const Project project = this->project(0);
        await(m_state->parts().connections.connect(project));
        const QString failure = u"%1/%2: Not a directory"_s.arg(blocker.fileName(), project.domain);
        QCOMPARE(m_state->lastErrorText(), failure);
        QCOMPARE(messages().last(), u"Mount fuer %1 fehlgeschlagen: "_s.arg(project.domain) + failure);
    }
};

QTEST_GUILESS_MAIN(TestFailures)
#include "tst_failures.moc"
