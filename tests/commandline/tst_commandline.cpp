#include "CommandLine/CommandService.h"
#include "System/Tables/MountTable.h"
#include "state/StateFixture.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

/// What the running program answers, with real mounts.
class TestCommandLine : public StateFixture {
    Q_OBJECT

    using Command = Request::Command;

    std::unique_ptr<CommandService> m_service;
    QStringList m_panel; ///< what it was asked for

    [[nodiscard]] QVariant firstHit() const {
        m_state->setSearchText(u"sandbox.test"_s);
        return m_state->visibleProjects()->index(0).data(ProjectListModel::domainRole);
    }

    Answer ask(Command command, const QString& project = {}, OpenTarget target = OpenTarget::editor) {
        try {
            return await(m_service->answer({.command = command, .project = project, .target = target}));
        } catch (const RequestError& error) {
            return {error.exitStatus(), {}, error.description()};
        }
    }

  private Q_SLOTS:

    void init() {
        StateFixture::init();
        m_panel.clear();
        m_service = std::make_unique<CommandService>(
            *m_state,
            CommandService::Panel{[this] { m_panel.append(u"show"_s); },
                                  [this] { m_panel.append(u"toggle"_s); },
                                  [this](const QString& domain) { m_panel.append(domain); }},
            u"1.0.0"_s);
        QCOMPARE(ask(Command::list), (Answer{ExitStatus::notReady, {}, u"Bitte einloggen."_s}));
        signIn("erika");
    }

    void cleanup() {
        m_service.reset();
        StateFixture::cleanup();
    }

    void twoConnectsAreOneMount() {
        QCoro::Task<Answer> first = m_service->answer({.command = Command::connect, .project = domain(0)});
        const Answer second = ask(Command::connect, domain(0));
        QCOMPARE(second, (Answer{.output = mountPoint(0) + u'\n'}));
        QCOMPARE(await(std::move(first)), second);
        QVERIFY(ask(Command::status).output.contains(domain(0) + u"\tGemountet\t"_s + mountPoint(0)));
        QCOMPARE(ask(Command::disconnect), Answer());
        QVERIFY(m_state->connectedDomains().isEmpty());
        QCOMPARE(firstHit(), domain(0));
    }

    void allEndsWhatIsBeingConnectedToo() {
        m_platform->ssh().freeze();
        for (const int index : {0, 1})
            m_state->perform(static_cast<int>(HoverTarget::connect), domain(index), false);
        QTRY_VERIFY(MountTable::lists(mountPoint(0)) && MountTable::lists(mountPoint(1)));
        QCOMPARE(ask(Command::disconnect), Answer());
        QVERIFY(m_state->parts().connections.connectingDomains().isEmpty());
        const QString together = messages().join(u'\n');
        QVERIFY(together.contains(QRegularExpression(u"Trenne [^\n]*\nTrenne "_s)));
    }

    void aFailureHasTheReasonOfThePanel() {
        m_platform->ssh().acceptKey(false);
        const Answer refused = ask(Command::open, domain(0));
        QCOMPARE(refused.exitStatus, ExitStatus::failed);
        QVERIFY(!refused.error.isEmpty());
        QCOMPARE(refused.error, m_state->lastErrorText());
    }

    void openingTellsWhatTheLogTells() {
        const Answer unreachable = ask(Command::open, domain(0), OpenTarget::database);
        QCOMPARE(unreachable.exitStatus, ExitStatus::failed);
        QVERIFY(unreachable.error.startsWith(u"Config konnte nicht gelesen werden: "_s));
        const QString site = u"https://"_s + domain(0);
        m_shell->opensSsh = true;
        for (const auto& [target, opened] :
             {std::pair(OpenTarget::shell, u"ssh://"_s + project(0).sshLogin()),
              {OpenTarget::site, site},
              {OpenTarget::admin, site + u"/admin"_s},
              {OpenTarget::files, mountPoint(0)},
              {OpenTarget::editor, u"code "_s}}) {
            m_shell->opened.clear();
            QCOMPARE(ask(Command::open, domain(0), target), Answer());
            QVERIFY2(m_shell->opened.value(0).startsWith(opened), qUtf8Printable(opened));
        }
        QCOMPARE(ask(Command::open, domain(1), OpenTarget::site), Answer());
        QCOMPARE(firstHit(), domain(1));
    }

    void rightsAreThoseOfTheRow() {
        signIn("redaktion");
        for (const Project& project : m_state->projects())
            QCOMPARE(ask(Command::connect, project.domain).exitStatus, ExitStatus::notReady);
        QVERIFY(!m_state->projects().isEmpty());
    }

    void aListThatIsNotLoadedIsNoUnknownProject() {
        answer(Endpoint::directory, 500);
        load();
        const Answer failed = ask(Command::connect, domain(0));
        QCOMPARE(failed.exitStatus, ExitStatus::failed);
        QCOMPARE(failed.error, m_state->parts().loading.connectionFailure());
        answer(Endpoint::directory, 200);
    }

    void aLinkSelectsWhatIsListed() {
        for (const QString& link : {u"harvellon:x.de"_s, u"harvellon://"_s + domain(0).toUpper() + u"/?a"_s})
            await(m_service->follow(link));
        QCOMPARE(m_panel, (QStringList{u"show"_s, u"x.de"_s, u"show"_s, domain(0)}));
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
