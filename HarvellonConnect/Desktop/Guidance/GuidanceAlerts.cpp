#include "Desktop/Guidance/GuidanceAlerts.h"

#include "Desktop/QmlViews.h"
#include "Desktop/Screens.h"
#include "State/AppState.h"

#include <QScreen>

GuidanceAlerts::GuidanceAlerts(QmlViews& views, AppState& state, QObject* parent)
    : QObject(parent), m_views(views), m_state(state) {
    connect(&m_state, &AppState::guidanceChanged, this, &GuidanceAlerts::update);
    update();
}

GuidanceAlerts::~GuidanceAlerts() = default;

void GuidanceAlerts::update() {
    const QVariantMap guidance = m_state.guidance();
    if (m_window) {
        m_window->removeEventFilter(this);
        m_window->hide();
        m_window.release()->deleteLater(); // its view is still running the handler that answered
    }
    if (!guidance.isEmpty())
        open(guidance);
}

void GuidanceAlerts::open(const QVariantMap& guidance) {
    m_window = std::make_unique<QQuickView>(&m_views.engine(), nullptr);
    m_window->setFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                       Qt::WindowStaysOnTopHint);
    m_window->setModality(Qt::ApplicationModal);
    m_window->setTitle(QStringLiteral("Harvellon Connect"));
    QVariantMap properties = guidance;
    properties.insert(QStringLiteral("state"), QVariant::fromValue(&m_state));
    m_window->setInitialProperties(properties);
    m_window->setSource(QmlViews::address(QStringLiteral("GuidanceAlert")));
    m_window->setMinimumSize(m_window->size());
    m_window->setMaximumSize(m_window->size());
    m_window->installEventFilter(this);

    QRect frame = m_window->geometry();
    frame.moveCenter(screenUnderPointer()->availableGeometry().center());
    m_window->setPosition(frame.topLeft());
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

bool GuidanceAlerts::eventFilter(QObject* watched, QEvent* event) {
    constexpr int closedUnanswered = -1;
    if (event->type() == QEvent::Close)
        m_state.answerGuidance(closedUnanswered);
    return QObject::eventFilter(watched, event);
}
