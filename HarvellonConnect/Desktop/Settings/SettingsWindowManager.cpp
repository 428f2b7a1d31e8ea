#include "Desktop/Settings/SettingsWindowManager.h"

#include "Desktop/Native/NativeDesktop.h"
#include "Desktop/QmlViews.h"
#include "Desktop/Screens.h"
#include "Desktop/StatusItem/StatusBarController.h"
#include "State/AppState.h"

#include <QScreen>

SettingsWindowManager::SettingsWindowManager(QmlViews& views, StatusBarController& statusBar,
                                             QString versionText, QObject* parent)
    : QObject(parent), m_views(views), m_statusBar(statusBar), m_versionText(std::move(versionText)) {}

SettingsWindowManager::~SettingsWindowManager() = default;

void SettingsWindowManager::show(AppState& state) {
    m_statusBar.close();
    if (!m_window)
        makeWindow(state);
    if (!m_window->isVisible())
        Q_EMIT m_controller.opened();
    state.programs()->look();
    state.parts().repositories.look(); // somebody else may have changed the configuration
    m_statusBar.lookAtNotifications();
    activateApplication();
    if (m_window->windowStates().testFlag(Qt::WindowMinimized))
        m_window->showNormal();
    else
        m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

void SettingsWindowManager::makeWindow(AppState& state) {
    constexpr QSize size{520, 460};
    m_window = std::make_unique<QQuickView>(&m_views.engine(), nullptr);
    m_window->setTitle(QStringLiteral("Einstellungen"));
    m_window->setResizeMode(QQuickView::SizeRootObjectToView);
    m_window->setMinimumSize(size);
    keepPointsOnEveryScreen(*m_window);
    m_window->setInitialProperties({{QStringLiteral("controller"), QVariant::fromValue(&m_controller)},
                                    {QStringLiteral("state"), QVariant::fromValue(&state)},
                                    {QStringLiteral("versionText"), m_versionText}});
    m_window->setSource(QmlViews::address(QStringLiteral("SettingsView")));
    connect(&m_controller, &SettingsController::closeRequested, m_window.get(), &QWindow::close);

    const QRect room = screenUnderPointer()->availableGeometry();
    QRect frame(QPoint(0, 0), size);
    frame.moveCenter(room.center());
    m_window->setGeometry(frame);
}
