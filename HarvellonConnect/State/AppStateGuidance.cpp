#include "State/AppState.h"

void AppState::showSSHFSSetupAlert() {
    show(setupGuidance(m_host));
}

void AppState::showSSHFSRepairAlert() {
    show(repairGuidance(m_host));
}

void AppState::show(const Guidance& guidance) {
    if (m_guidance)
        return; // ten refused connects ask for one answer
    m_guidance = guidance;
    Q_EMIT guidanceChanged();
}

QVariantMap AppState::guidanceMap() const {
    if (!m_guidance)
        return {};
    QStringList labels;
    for (const GuidanceButton& button : m_guidance->buttons)
        labels.append(button.label);
    return {{QStringLiteral("title"), m_guidance->title},
            {QStringLiteral("text"), m_guidance->text},
            {QStringLiteral("buttons"), labels}};
}

void AppState::answerGuidance(int button) {
    if (!m_guidance)
        return;
    const GuidanceButton pressed = m_guidance->buttons.value(button);
    m_guidance.reset();
    Q_EMIT guidanceChanged();
    switch (pressed.action) {
    case GuidanceButton::Action::openAddress:
        openAddress(pressed.target);
        break;
    case GuidanceButton::Action::copy:
        m_desktop.copyText(pressed.target);
        break;
    case GuidanceButton::Action::openTerminal:
        openTerminal();
        break;
    case GuidanceButton::Action::none:
        break;
    }
    if (!pressed.logLine.isEmpty())
        log(pressed.logLine, ActivityLogLevel::info);
}
