#include "Actions/OpenSite.h"

#include "Actions/Openers.h"
#include "Actions/Programs/ProgramChoices.h"
#include "Actions/Rules/ShellWords.h"
#include "Actions/Rules/SiteAddresses.h"
#include "Directory/PlainDomain.h"
#include "System/Reporter.h"
#include "System/Ssh/SharedConnections.h"

namespace {
void refuse(const ActionContext& context, const QString& what, const Project& project) {
    context.report.log(
        QStringLiteral("%1: %2 ist kein Rechnername.").arg(what, printableDomain(project.domain)),
        ActivityLogLevel::warning);
}

/// `shared`: the arguments that lead ssh over another connection.
QStringList shellCommand(const ActionContext& context, const Project& project,
                         const QStringList& shared = {}) {
    return QStringList{context.host.ssh} + shared + QStringList{project.sshLogin()};
}
} // namespace

QCoro::Task<> openSite(ActionContext& context, Project project, bool alternative) {
    if (isPlainSite(project.domain))
        openAddress(context, siteAddress(project, alternative));
    else
        refuse(context, QStringLiteral("Seite nicht geoeffnet"), project);
    co_return;
}

QCoro::Task<> openShell(ActionContext& context, Project project, bool /*alternative*/) {
    if (!isPlainDomain(project.domain)) {
        refuse(context, QStringLiteral("SSH-Shell nicht moeglich"), project);
        co_return;
    }
    if (context.programs.terminal.isEmpty()) {
        const QString scheme = QStringLiteral("ssh");
        const bool hasHandler = co_await opensAddresses(context, scheme);
        if (hasHandler) {
            openAddress(context, shellAddress(project));
            co_return;
        }
    }
    const QString login = project.sshLogin();
    const QStringList shared = co_await context.shared.answering(login);
    openTerminal(context, shellCommand(context, project, shared));
}

QCoro::Task<> copySiteAddress(ActionContext& context, Project project, bool alternative) {
    if (isPlainSite(project.domain))
        context.copyText(siteAddress(project, alternative));
    else
        refuse(context, QStringLiteral("Adresse nicht kopiert"), project);
    co_return;
}

QCoro::Task<> copyShellCommand(ActionContext& context, Project project, bool /*alternative*/) {
    if (isPlainDomain(project.domain))
        context.copyText(shellLine(shellCommand(context, project)));
    else
        refuse(context, QStringLiteral("ssh-Befehl nicht kopiert"), project);
    co_return;
}
