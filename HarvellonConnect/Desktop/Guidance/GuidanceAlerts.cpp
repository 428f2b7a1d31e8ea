#include "Desktop/Guidance/GuidanceAlerts.h"

#include "Desktop/QmlViews.h"
#include "Desktop/Screens.h"
#include "State/AppState.h"

#include <QQuickItem>
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
        m_window.release()->deleteLater(); // the answer comes from within the window
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
    m_window->setInitialProperties(guidance);
    m_window->setSource(QmlViews::address(QStringLiteral("GuidanceAlert")));
    if (QQuickItem* const view = m_window->rootObject())
        connect(view, SIGNAL(answered(int)), this, SLOT(answer(int)));
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
    if (event->type() == QEvent::Close)
        answer(-1);
    return QObject::eventFilter(watched, event);
}

void GuidanceAlerts::answer(int button) {
    m_state.answerGuidance(button);
}
