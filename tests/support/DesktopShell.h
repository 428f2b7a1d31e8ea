#pragma once

#include "System/Shell.h"

#include <QScopeGuard>
#include <QStringList>

#include <functional>

/// The real runner, except that nothing opens on the desktop: what would have is written down.
class DesktopShell : public Shell {
  public:
    QStringList opened;                          ///< addresses, folders, and command lines of programs
    std::function<void(const QString&)> browser; ///< gets what the opener gets
    bool opensSsh = false;                       ///< whether a program handles ssh addresses
    bool hasEditor = true;
    bool opens = true; ///< whether the opener finds a program
    int running = 0;   ///< commands that have not ended yet

    QCoro::Task<ShellResult> run(QString executable, QStringList arguments,
                                 std::chrono::milliseconds limit) override {
        ++running;
        const auto end = qScopeGuard([this] { --running; });
        if (executable.endsWith(QLatin1String("/xdg-mime")))
            co_return ShellResult{0,
                                  opensSsh || arguments.last().endsWith(QLatin1String("/mysql"))
                                      ? QStringLiteral("ssh.desktop\n")
                                      : QString(),
                                  {}};
        if (executable.endsWith(QLatin1String("/which")) && arguments.value(0) == QLatin1String("code"))
            co_return ShellResult{hasEditor ? 0 : 1, QStringLiteral("code\n"), {}};
        co_return co_await Shell::run(executable, arguments, limit);
    }

    void launch(const QString& executable, const QStringList& arguments) override {
        if (executable == QLatin1String("/usr/bin/env")) // with a variable in front
            return launch(arguments.value(1), arguments.mid(2));
        const bool opener = executable.endsWith(QLatin1String("/xdg-open"));
        const bool opensAddresses = opener || executable == QLatin1String("/usr/bin/open");
        opened.append(
            ((opener ? QStringList() : QStringList(executable)) + arguments).join(QLatin1Char(' ')));
        if (opensAddresses && browser && arguments.size() == 1)
            browser(arguments.value(0));
    }

    QFuture<bool> launchWatched(const QString& executable, const QStringList& arguments) override {
        launch(executable, arguments);
        return QtFuture::makeReadyFuture(opens);
    }
};
