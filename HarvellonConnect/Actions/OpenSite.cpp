#include "Actions/OpenSite.h"

#include "Actions/Openers.h"
#include "Actions/Rules/SiteAddresses.h"
#include "System/Reporter.h"
#include "System/Ssh/SharedConnections.h"

QCoro::Task<> openSite(ActionContext& context, Project project, bool alternative) {
    openAddress(context, siteAddress(project, alternative));
    co_return;
}

QCoro::Task<> openShell(ActionContext& context, Project project, bool /*alternative*/) {
    const QString scheme = QStringLiteral("ssh");
    const bool hasHandler = co_await opensAddresses(context, scheme);
    if (hasHandler) {
        openAddress(context, shellAddress(project));
        co_return;
    }
    if (const std::optional<QStringList> arguments = shellArguments(project)) {
        const QString login = project.sshLogin();
        const QStringList shared = co_await context.shared.answering(login);
        openTerminal(context, QStringList{context.host.ssh} + shared + *arguments);
    } else {
        context.report.log(
            QStringLiteral("SSH-Shell nicht moeglich: %1 ist kein Rechnername.").arg(project.domain),
            ActivityLogLevel::warning);
    }
}
