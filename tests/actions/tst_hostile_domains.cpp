#include "Actions/ClearCache.h"
#include "Actions/OpenDatabase.h"
#include "Actions/OpenSite.h"
#include "Actions/ServerSearch.h"
#include "Actions/VSCodeLauncher.h"
#include "System/Reporter.h"
#include "System/Shell.h"
#include "System/Ssh/SharedConnections.h"
#include "support/Await.h"

#include <QNetworkAccessManager>
#include <QTest>

using namespace Qt::StringLiterals;
using Action = std::function<QCoro::Task<>(ActionContext&, Project)>;
Q_DECLARE_METATYPE(Action)

namespace {
class RecordingShell : public Shell {
  public:
    QStringList calls;

    QCoro::Task<ShellResult> run(QString executable, QStringList arguments,
                                 std::chrono::milliseconds) override {
        calls.append(executable + u' ' + arguments.join(u' '));
        co_return ShellResult{};
    }

    void launch(const QString& executable, const QStringList& arguments) override {
        calls.append(executable + u' ' + arguments.join(u' '));
    }
};

class RecordingReporter : public Reporter {
  public:
    QString last;

  private:
    void log(const QString& message, ActivityLogLevel /*level*/) override { last = message; }

    void setLastError(std::optional<QString> /*error*/) override {}

    void setAccountError(std::optional<QString> /*error*/) override {}
};

QCoro::Task<> search(ActionContext& context, Project project) {
    try {
        co_await searchOnServer(context, project, u"x"_s);
    } catch (const SearchError& error) {
        static_cast<Reporter&>(context.report).log(error.description(), ActivityLogLevel::error);
    }
}
} // namespace

/// A directory that names no host, at each action that would hand the name on. Each row has a name that the
/// program behind that action would understand differently.
class TestHostileDomains : public QObject {
    Q_OBJECT

  private Q_SLOTS:

    void reachNoProgram_data() {
        QTest::addColumn<Action>("action");
        QTest::addColumn<QString>("domain");
        QTest::addColumn<QString>("told");
        const auto row = [](const char* name, const Action& action, const QString& domain,
                            const QString& told) { QTest::newRow(name) << action << domain << told; };
        const auto of = [](auto function) {
            return Action([function](ActionContext& context, Project project) {
                return function(context, project, false);
            });
        };
        row("site of another host", of(openSite), u"example.org@evil.example"_s,
            u"Seite nicht geoeffnet: example.org@evil.example ist kein Rechnername."_s);
        row("option of ssh", of(openShell), u"-oProxyCommand=x"_s,
            u"SSH-Shell nicht moeglich: -oProxyCommand=x ist kein Rechnername."_s);
        row("parameter of the database's address", of(openDatabase), u"a.example?ssh_port=1"_s,
            u"SSH-Verbindung fehlgeschlagen: Die Domain ist nicht zulässig."_s);
        row("cache of another host", of(clearCache), u"example.org@127.0.0.1:9"_s,
            u"Ungueltige Cache-URL: https://example.org@127.0.0.1:9/?type=5820917364"_s);
        row("pattern in ssh's configuration", search, u"a*.example"_s, u"a*.example ist kein Rechnername."_s);
        row("escape codes", of(openSite), u"a\x1b[2J\u202e"_s,
            u"Seite nicht geoeffnet: a\ufffd[2J\ufffd ist kein Rechnername."_s);
    }

    void reachNoProgram() {
        QFETCH(Action, action);
        QFETCH(QString, domain);
        QFETCH(QString, told);
        const HostSystem host = HostSystem::macOS(u"/h"_s);
        RecordingShell shell;
        QNetworkAccessManager network;
        RecordingReporter report;
        VSCodeLauncher editor(host, shell);
        SharedConnections shared(host, shell);
        const auto mountPoint = [](const QString&) { return std::optional(u"/m"_s); };
        ActionContext context{host, shell, network, report, editor, shared, mountPoint,
                              {},   {},    {},      {},     {},     {}};
        const Project project{domain, std::nullopt, u"1"_s, u"/"_s, ProjectType::ssh};
        await(action(context, project));
        QCOMPARE(report.last, told);
        QCOMPARE(shell.calls, QStringList());
    }
};

QTEST_GUILESS_MAIN(TestHostileDomains)
#include "tst_hostile_domains.moc"
