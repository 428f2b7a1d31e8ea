#pragma once

#include "Actions/ActionContext.h"
#include "Actions/Database/DatabaseTunnels.h"
#include "Actions/Programs/ProgramChoices.h"
#include "Actions/VSCodeLauncher.h"
#include "System/Reporter.h"
#include "System/Shell.h"
#include "System/Ssh/SharedConnections.h"
#include "support/Await.h"

#include <QDir>
#include <QFile>
#include <QNetworkAccessManager>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

/// Starts nothing, and writes down what would have been started.
class RecordingShell : public Shell {
  public:
    QStringList calls;
    bool hasWhich = true;

    QCoro::Task<ShellResult> run(QString executable, QStringList arguments,
                                 std::chrono::milliseconds) override {
        launch(executable, arguments);
        if (hasWhich && executable.endsWith("which"_L1))
            co_return ShellResult{1, {}, {}};
        throw ShellError::launchFailed(executable); // nobody waits for what is opened
    }

    void launch(const QString& executable, const QStringList& arguments) override {
        calls.append(executable + u'|' + arguments.join(u'|'));
    }
};

/// Keeps the last line of the activity log.
class LastLine : public Reporter {
  public:
    QString text;

    void log(const QString& message, ActivityLogLevel /*level*/) override { text = message; }

  private:
    void setLastError(std::optional<QString> /*error*/) override {}

    void setAccountError(std::optional<QString> /*error*/) override {}
};

/// What actions work with on `host`. Every domain is mounted at /m while `mounted` is true.
struct ActionParts {
    ActionParts(HostSystem system, Shell& shell, TunnelLimits limits = {})
        : host(std::move(system)), editor(host, shell), shared(host, shell),
          tunnels(host, shell, limits), context{host,     shell,   network,
                                                report,   editor,  shared,
                                                programs, tunnels, [this](auto&) { return mountPoint(); },
                                                {},       {},      {},
                                                {},       {},      {}} {}

    [[nodiscard]] std::optional<QString> mountPoint() const {
        return mounted ? std::optional(u"/m"_s) : std::nullopt;
    }

    HostSystem host;
    bool mounted = true;
    QNetworkAccessManager network;
    LastLine report;
    VSCodeLauncher editor;
    SharedConnections shared;
    ProgramChoices programs;
    DatabaseTunnels tunnels;
    ActionContext context;
};

inline void write(const QString& path, const QByteArray& content, QFile::Permissions more = {}) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() ||
        !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | more))
        qFatal("cannot write %s", qPrintable(path));
}
