#include "State/GuidanceQuestion.h"

#include "Actions/Openers.h"
#include "System/Reporter.h"

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
