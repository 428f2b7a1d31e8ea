#include "State/Access/AccessHelp.h"

#include "Directory/PlainDomain.h"
#include "Mounting/Keys/KnownHosts.h"
#include "State/Access/NewKey.h"
#include "State/ActivityReport.h"
#include "System/Reporter.h"

#include <QPointer>

namespace {
QString shortened(const QString& path, const QString& home) {
    return path.startsWith(home + QLatin1Char('/')) ? QLatin1Char('~') + path.mid(home.size()) : path;
}
} // namespace

AccessHelp::AccessHelp(const ActionContext& context, AccessLimits limits)
    : m_context(context), m_limits(limits) {
    constexpr std::chrono::milliseconds togetherWithin{300}; // several files change at once
    m_lookAgain.setSingleShot(true);
    m_lookAgain.setInterval(togetherWithin);
    m_lookAgain.callOnTimeout(this, [this] { lookForKey(m_visit); });
    connect(&m_keyFolders, &QFileSystemWatcher::directoryChanged, &m_lookAgain, qOverload<>(&QTimer::start));
}

void AccessHelp::offer(const Project& project, const QString& failure) {
    if (m_open)
        return;
    m_project.reset();
    if (isPlainDomain(project.domain)) // ssh is given no other
        m_project = project;
    m_failure = ActivityReport::bounded(failure); // as it is published
    Q_EMIT changed();
}

void AccessHelp::setLastError(const std::optional<QString>& error) {
    m_lastError = error;
    Q_EMIT changed();
}

void AccessHelp::show() {
    if (m_open || !m_project)
        return;
    m_open = true;
    ++m_visit;
    m_own.reset();
    m_copied = false;
    m_checking = false;
    endCheck({});
    lookForKey(m_visit);
    Q_EMIT openChanged();
}

void AccessHelp::close() {
    if (!m_open)
        return;
    m_open = false;
    ++m_visit;
    m_lookAgain.stop();
    if (const QStringList folders = m_keyFolders.directories(); !folders.isEmpty())
        m_keyFolders.removePaths(folders);
    Q_EMIT openChanged();
}

QString AccessHelp::title() const {
    return m_project ? QStringLiteral("Zugang zu %1").arg(m_project->domain) : QString();
}

QString AccessHelp::keyText() const {
    if (!m_own)
        return QStringLiteral("Dein Schlüssel wird gesucht …");
    const QString home = m_context.host.homeFolder;
    if (m_own->key) {
        const QString comment = m_own->key->line.section(QLatin1Char(' '), 2);
        if (m_copied)
            return QStringLiteral("Kopiert. Füge den Schlüssel im Harvellon-Backend bei deinem Account ein.");
        if (!m_own->key->source.isEmpty())
            return QStringLiteral("Dein Schlüssel: %1").arg(shortened(m_own->key->source, home));
        return comment.isEmpty() ? QStringLiteral("Dein Schlüssel: aus dem Agenten")
                                 : QStringLiteral("Dein Schlüssel: „%1“ aus dem Agenten").arg(comment);
    }
    if (!m_own->unreadable.isEmpty())
        return QStringLiteral("Zu %1 fehlt der öffentliche Teil (.pub).")
            .arg(shortened(m_own->unreadable, home));
    return QStringLiteral("Du hast noch keinen Schlüssel, den ssh anbieten kann.");
}

QString AccessHelp::keyOffer() const {
    return m_own ? ::keyOffer(*m_own) : QString();
}

QCoro::Task<> AccessHelp::lookForKey(int visit) {
    const QPointer<AccessHelp> guard(this);
    const QString login = m_project->sshLogin();
    const OwnKey own = co_await findOwnKey(m_context.host, m_context.shell, login);
    if (!guard || visit != m_visit)
        co_return;
    m_own = own;
    QStringList unwatched = own.folders;
    unwatched.removeIf([this](const QString& folder) { return m_keyFolders.directories().contains(folder); });
    if (!unwatched.isEmpty()) {
        m_keyFolders.addPaths(unwatched);
        m_lookAgain.start(); // something may have appeared before the folder was watched
    }
    Q_EMIT changed();
}

void AccessHelp::copyKey() {
    if (!keyIsKnown())
        return;
    copyPublicKey(m_context, *m_own->key);
    m_copied = true;
    Q_EMIT changed();
}

void AccessHelp::makeKey() {
    if (m_own)
        makeKeyInTerminal(m_context, *m_own);
}

void AccessHelp::beginCheck() {
    m_checking = true;
    m_works = false;
    m_serverKey.reset();
    m_asksForTrust = false;
    m_finding = QStringLiteral("Der Zugang wird geprüft …");
    Q_EMIT changed();
}

void AccessHelp::endCheck(const QString& finding) {
    m_checking = false;
    m_works = false;
    m_serverKey.reset();
    m_asksForTrust = false;
    m_finding = finding;
    Q_EMIT changed();
}

void AccessHelp::check() {
    if (m_open && !m_checking)
        runCheck(m_visit);
}

QCoro::Task<> AccessHelp::runCheck(int visit) {
    const QPointer<AccessHelp> guard(this);
    beginCheck();
    try {
        prepareKnownHosts(m_context.host);
    } catch (const Failure& failure) {
        endCheck(failure.description());
        co_return;
    }
    const auto tell = [guard, visit](const QString& text) {
        if (!guard || guard->m_visit != visit)
            return;
        guard->m_finding = text;
        Q_EMIT guard->changed();
    };
    const std::function<void(const QString&)> silent = [tell](const QString& log) {
        tell(waitsForSignature(log)
                 ? QStringLiteral(
                       "Der Server kennt den Schlüssel; ssh wartet auf die Unterschrift. Vielleicht will "
                       "der Agent eine Berührung oder eine Passphrase.")
                 : QStringLiteral("Der Zugang wird geprüft, bisher ohne Antwort …"));
    };
    const std::function<void()> spoken = [tell] { tell(QStringLiteral("Der Zugang wird geprüft …")); };
    const QString login = m_project->sshLogin();
    const QString domain = m_project->domain;
    const AccessFinding finding =
        co_await checkAccess(m_context.host, m_context.shell, login, domain, m_limits, silent, spoken);
    if (!guard || visit != m_visit)
        co_return;
    if (finding.concernsHostKey()) {
        co_await compareServerKeys(visit, finding.step);
        co_return;
    }
    endCheck(finding.sentence);
    m_works = finding.step == AccessStep::works;
    Q_EMIT changed();
}

QCoro::Task<> AccessHelp::compareServerKeys(int visit, AccessStep step) {
    const QPointer<AccessHelp> guard(this);
    const QString login = m_project->sshLogin();
    QString problem;
    ServerKey key;
    try {
        key = co_await lookAtServerKey(m_context.host, m_context.shell, login);
    } catch (const Failure& failure) {
        problem = failure.description();
    }
    if (!guard || visit != m_visit)
        co_return;
    if (!problem.isEmpty()) {
        endCheck(problem);
        co_return;
    }
    if (step == AccessStep::hostKeyChanged && key.known.isEmpty()) {
        endCheck(QStringLiteral(
            "Der Server weist sich mit einem anderen Schlüssel aus als in einer Liste des Systems "
            "steht. Diese Liste ändert Harvellon Connect nicht."));
        co_return;
    }
    endCheck(
        step == AccessStep::hostKeyChanged
            ? QStringLiteral("Der Server weist sich mit einem anderen Schlüssel aus als bisher: Er wurde neu "
                             "eingerichtet, oder jemand gibt sich für ihn aus.")
            : QStringLiteral(
                  "Der Server ist noch nicht bekannt. Vergleiche seinen Fingerabdruck, bevor du ihm "
                  "traust."));
    m_serverKey = key;
    Q_EMIT changed();
}

QString AccessHelp::knownServerKeys() const {
    return m_serverKey ? readable(m_serverKey->known) : QString();
}

QString AccessHelp::serverKey() const {
    return m_serverKey ? readable({m_serverKey->presented}) : QString();
}

void AccessHelp::trust() {
    if (!m_serverKey || m_checking)
        return;
    if (m_asksForTrust) {
        enterServerKey(m_visit);
        return;
    }
    m_asksForTrust = true;
    Q_EMIT changed();
}

QCoro::Task<> AccessHelp::enterServerKey(int visit) {
    const QPointer<AccessHelp> guard(this);
    const ServerKey key = *m_serverKey;
    beginCheck();
    QString problem;
    try {
        co_await trustServerKey(m_context.host, m_context.shell, key);
    } catch (const Failure& failure) {
        problem = failure.description();
    }
    if (!guard)
        co_return;
    if (problem.isEmpty())
        m_context.report.log(
            QStringLiteral("Neuen Schlüssel des Servers übernommen: %1").arg(readable({key.presented})),
            ActivityLogLevel::info);
    if (visit != m_visit)
        co_return;
    if (problem.isEmpty())
        co_await runCheck(visit);
    else
        endCheck(problem);
}
