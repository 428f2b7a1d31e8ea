#include "State/Login/LoginPage.h"

#include "System/Reporter.h"
#include "System/Shell.h"

#include <QCoroFuture>
#include <QPointer>

void LoginPage::open(const QUrl& address) {
    m_address = address.toString(QUrl::FullyEncoded);
    tellUnlessOpened(m_address);
}

QCoro::Task<> LoginPage::tellUnlessOpened(QString address) {
    const QPointer<LoginPage> guard(this);
    const ExternalCommand opener = m_context.host.opener;
    const QFuture<bool> opening =
        m_context.shell.launchWatched(opener.executable, opener.argumentsFor(address));
    const bool opened = co_await opening;
    if (opened || !guard || m_address != address) // another login may wait by now
        co_return;
    const QString failure = QStringLiteral("Der Browser konnte nicht geöffnet werden.");
    m_context.report.log(failure, ActivityLogLevel::warning);
    m_context.report.setAccountError(
        failure + QStringLiteral(" Kopiere die Adresse und öffne sie in einem Browser deiner Wahl."));
}

void LoginPage::copyAddress() const {
    if (!m_address.isEmpty())
        m_context.copyText(m_address);
}
