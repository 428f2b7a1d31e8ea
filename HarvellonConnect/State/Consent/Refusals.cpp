#include "State/Consent/Refusals.h"

#include "Actions/Openers.h"
#include "State/Connections.h"
#include "System/Async.h"
#include "System/Reporter.h"

#include <QPointer>

#include <filesystem>

namespace {
/// A dialog of the system may ask the user, so the answer can take a while.
constexpr std::chrono::minutes longestAnswer{2};

QString sentence(Permission permission) {
    switch (permission) {
    case Permission::automation:
        return QStringLiteral("Harvellon Connect darf Google Chrome nicht nach dem aktiven Tab fragen.");
    case Permission::notifications:
        return QStringLiteral("Harvellon Connect darf keine Mitteilungen zeigen.");
    case Permission::loginItem:
        return QStringLiteral("Der Start beim Anmelden wartet auf deine Erlaubnis.");
    case Permission::networkVolumes:
        return QStringLiteral("Harvellon Connect darf die Dateien auf Netzwerk-Volumes nicht lesen.");
    }
    Q_UNREACHABLE();
}

bool isForbidden(const QString& folder) {
    std::error_code error;
    const std::filesystem::directory_iterator listing(folder.toStdString(), error);
    // A server that refuses answers with "permission denied", which is another error.
    return error == std::errc::operation_not_permitted;
}
} // namespace

Refusals::Refusals(const ActionContext& context, Connections& connections) : m_context(context) {
    connect(&connections, &Connections::connectionChanged, this,
            [this](const QString& domain, bool connected) {
                if (connected)
                    lookAtVolume(domain);
            });
}

QString Refusals::text() const {
    if (m_isDismissed || m_refused.isEmpty())
        return {};
    return m_untold.isEmpty() ? standing() : m_untold + QLatin1Char('\n') + standing();
}

QString Refusals::standing() const {
    return m_refused.isEmpty() ? QString() : sentence(m_refused.last());
}

void Refusals::refuse(Permission permission, const QString& untold) {
    if (!m_context.host.permissionPages.contains(permission))
        return;
    const bool isKnown = m_refused.removeAll(permission) > 0;
    m_refused.append(permission);
    if (!isKnown)
        m_context.report.log(sentence(permission), ActivityLogLevel::warning);
    // The settings look at notifications without the user having tried anything.
    if (!isKnown || !untold.isEmpty() || permission != Permission::notifications) {
        m_untold = untold;
        m_isDismissed = false;
    }
    Q_EMIT changed();
}

void Refusals::allow(Permission permission) {
    if (m_refused.removeAll(permission) == 0)
        return;
    m_untold.clear();
    Q_EMIT changed();
}

/// Whether the files of a mount may be read: the system decides that apart from the server.
QCoro::Task<> Refusals::lookAtVolume(QString domain) {
    const QPointer<Refusals> guard(this);
    const std::optional<QString> folder = m_context.mountPoint(domain);
    if (!folder || !m_context.host.permissionPages.contains(Permission::networkVolumes))
        co_return;
    const std::function<bool()> question = [path = *folder] { return isForbidden(path); };
    const std::optional<QFuture<bool>> forbidden = m_context.ask(domain, question);
    if (!forbidden)
        co_return;
    const bool answered = co_await Async::finishesWithin(*forbidden, longestAnswer);
    if (answered && guard)
        set(Permission::networkVolumes, forbidden->result());
}

void Refusals::dismiss() {
    m_isDismissed = true;
    Q_EMIT changed();
}

void Refusals::openSettings() const {
    if (!m_refused.isEmpty())
        openAddress(m_context, m_context.host.permissionPages.value(m_refused.last()));
}
