#include "Actions/OpenFolder.h"

#include "Actions/DirectoryWait.h"
#include "Actions/Openers.h"
#include "Actions/Programs/ChosenEditor.h"
#include "Actions/Programs/ProgramChoices.h"
#include "Actions/VSCodeLauncher.h"
#include "System/Reporter.h"

using namespace std::chrono_literals;

namespace {
std::optional<QString> mountPointOrWarning(const ActionContext& context, const QString& domain) {
    std::optional<QString> mountPoint = context.mountPoint(domain);
    if (!mountPoint)
        context.report.log(QStringLiteral("CloudStorage-Verzeichnis fuer %1 nicht gefunden.").arg(domain),
                           ActivityLogLevel::warning);
    return mountPoint;
}
} // namespace

QCoro::Task<> openInFinder(ActionContext& context, Project project, bool /*alternative*/) {
    const std::optional<QString> mountPoint = mountPointOrWarning(context, project.domain);
    if (!mountPoint)
        co_return;
    openAddress(context, *mountPoint);
    context.report.log(QStringLiteral("Öffne %1 im Finder...").arg(project.domain), ActivityLogLevel::info);
}

QCoro::Task<> copyFolder(ActionContext& context, Project project, bool /*alternative*/) {
    if (const std::optional<QString> mountPoint = mountPointOrWarning(context, project.domain))
        context.copyText(*mountPoint);
    co_return;
}

QCoro::Task<> openInVSCode(ActionContext& context, Project project, bool /*alternative*/) {
    const std::optional<QString> mountPoint = mountPointOrWarning(context, project.domain);
    if (!mountPoint)
        co_return;
    const QString domain = project.domain;
    const QString root = *mountPoint;
    const std::optional<QString> target = co_await documentTarget(context, project, root, 3s);
    if (!target) {
        context.report.log(QStringLiteral("Projektordner fuer %1 konnte nicht geoeffnet werden.").arg(domain),
                           ActivityLogLevel::warning);
        co_return;
    }
    const QString folder = *target;
    context.warmUp(domain);
    const std::optional<QString> editor = co_await openEditor(context, domain, folder);
    if (editor)
        context.report.log(QStringLiteral("Oeffne %1 in %2...").arg(domain, *editor), ActivityLogLevel::info);
}

QCoro::Task<std::optional<QString>> openEditor(const ActionContext& context, QString domain, QString folder) {
    const QString chosen = context.programs.editorOf(domain);
    if (!chosen.isEmpty())
        co_return openChosenEditor(context, chosen, domain, folder);
    const bool hasEditor = co_await context.editor.open(domain, folder);
    if (!hasEditor)
        context.report.log(QStringLiteral("VS Code wurde nicht gefunden."), ActivityLogLevel::warning);
    co_return hasEditor ? std::optional(QStringLiteral("VS Code")) : std::nullopt;
}

QCoro::Task<std::optional<QString>> documentTarget(const ActionContext& context, Project project,
                                                   QString mountPoint, std::chrono::seconds budget) {
    const QString domain = project.domain;
    const QString subfolder = project.documentFolder();
    const QString folder = mountPoint + QLatin1Char('/') + subfolder;
    if (co_await isBrokenLink(context.ask, domain, folder, budget)) {
        context.report.log(
            QStringLiteral(
                "Der Ordner %1 von %2 ist eine symbolische Verknüpfung, die nur der Server auflösen kann.")
                .arg(subfolder, domain),
            ActivityLogLevel::warning);
        context.offerLinks(project);
    } else if (co_await waitForDirectory(context.ask, domain, folder, budget)) {
        co_return folder;
    }
    if (!co_await waitForDirectory(context.ask, domain, mountPoint, 1s))
        co_return std::nullopt;
    context.report.log(QStringLiteral("Unterordner %1 nicht gefunden – oeffne Projektwurzel fuer %2.")
                           .arg(subfolder, domain),
                       ActivityLogLevel::warning);
    co_return mountPoint;
}
