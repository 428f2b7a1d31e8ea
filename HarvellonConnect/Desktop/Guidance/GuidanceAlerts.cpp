#include "Desktop/Guidance/GuidanceAlerts.h"

#include "State/AppState.h"

namespace {
void close(std::unique_ptr<AlertWindow>& window) {
    if (!window)
        return;
    QObject::disconnect(window.get(), &AlertWindow::dismissed, nullptr, nullptr);
    window->close();                 // unlike hiding, this tells when no window is left
    window.release()->deleteLater(); // its view is still running the handler that answered
}
} // namespace

GuidanceAlerts::GuidanceAlerts(QmlViews& views, AppState& state, QObject* parent)
    : QObject(parent), m_views(views), m_state(state) {
    connect(&m_state, &AppState::guidanceChanged, this, &GuidanceAlerts::update);
    connect(m_state.access(), &AccessHelp::openChanged, this, &GuidanceAlerts::updateAccess);
    update();
}

GuidanceAlerts::~GuidanceAlerts() = default;

void GuidanceAlerts::update() {
    constexpr int closedUnanswered = -1;
    close(m_window);
    QVariantMap properties = m_state.guidance();
    if (properties.isEmpty())
        return;
    properties.insert(QStringLiteral("state"), QVariant::fromValue(&m_state));
    m_window = std::make_unique<AlertWindow>(m_views, QStringLiteral("GuidanceAlert"), properties);
    connect(m_window.get(), &AlertWindow::dismissed, this,
            [this] { m_state.answerGuidance(closedUnanswered); });
    m_window->present();
}

void GuidanceAlerts::updateAccess() {
    close(m_accessWindow);
    if (!m_state.access()->isOpen())
        return;
    const QVariantMap properties{{QStringLiteral("access"), QVariant::fromValue(m_state.access())}};
    m_accessWindow = std::make_unique<AlertWindow>(m_views, QStringLiteral("AccessAlert"), properties);
    connect(m_accessWindow.get(), &AlertWindow::dismissed, m_state.access(), &AccessHelp::close);
    m_accessWindow->present();
}
