#include "State/GuidanceQuestion.h"

#include "Actions/Openers.h"
#include "Directory/Project.h"
#include "System/Reporter.h"

namespace {
const GuidanceButton cancel{QStringLiteral("Abbrechen"), GuidanceButton::Action::none, {}, {}};
} // namespace

Guidance linkGuidance(const Project& project, const std::function<void()>& follow) {
    return {
        QStringLiteral("Der Ordner „%1“ ist eine Verknüpfung").arg(project.documentFolder()),
        QStringLiteral(
            "Bei %1 führt sie aus dem gemounteten Baum hinaus. Der Server kann sie selbst auflösen: Dann "
            "ist ihr Ziel hier wie ein gewöhnlicher Ordner zu sehen; was darin gelöscht wird, ist auch am "
            "Ziel "
            "gelöscht. Dazu wird das Projekt neu verbunden; die Einstellung gilt für dieses Projekt und "
            "bleibt "
            "gemerkt.")
            .arg(project.domain),
        {{QStringLiteral("Auf dem Server auflösen"), GuidanceButton::Action::call, {}, {}, follow}, cancel}};
}

Guidance quitGuidance(const QStringList& domains, const std::function<void()>& wait,
                      const std::function<void()>& quit) {
    const QString title = domains.size() == 1
                              ? QStringLiteral("Auf 1 Projekt wird noch geschrieben")
                              : QStringLiteral("Auf %1 Projekten wird noch geschrieben").arg(domains.size());
    return {title,
            QStringLiteral("%1\n\nWenn Harvellon Connect jetzt endet, kommt auf dem Server nicht alles an.")
                .arg(domains.join(QLatin1Char('\n'))),
            {{QStringLiteral("Warten, dann beenden"), GuidanceButton::Action::call, {}, {}, wait},
             {QStringLiteral("Trotzdem beenden"), GuidanceButton::Action::call, {}, {}, quit},
             cancel}};
}

void GuidanceQuestion::show(const Guidance& guidance) {
    if (m_guidance)
        return; // ten refused connects need one answer
    m_guidance = guidance;
    Q_EMIT changed();
}

QVariantMap GuidanceQuestion::map() const {
    if (!m_guidance)
        return {};
    QStringList labels;
    for (const GuidanceButton& button : m_guidance->buttons)
        labels.append(button.label);
    return {{QStringLiteral("title"), m_guidance->title},
            {QStringLiteral("text"), m_guidance->text},
            {QStringLiteral("buttons"), labels}};
}

void GuidanceQuestion::answer(int button) {
    if (!m_guidance)
        return;
    const GuidanceButton pressed = m_guidance->buttons.value(button);
    m_guidance.reset();
    Q_EMIT changed();
    switch (pressed.action) {
    case GuidanceButton::Action::openAddress:
        openAddress(m_context, pressed.target);
        break;
    case GuidanceButton::Action::copy:
        m_context.copyText(pressed.target);
        break;
    case GuidanceButton::Action::openTerminal:
        openTerminal(m_context);
        break;
    case GuidanceButton::Action::call:
        pressed.call();
        break;
    case GuidanceButton::Action::none:
        break;
    }
    if (!pressed.logLine.isEmpty())
        m_context.report.log(pressed.logLine, ActivityLogLevel::info);
}
