#include "State/Git/MountedRepositories.h"

#include "Mounting/SSHFSMounter.h"
#include "State/Connections.h"
#include "System/Async.h"
#include "System/Git/GitSettings.h"

#include <QPointer>

#include <filesystem>

namespace {
constexpr std::chrono::seconds questionLimit{20}; // nobody waits for the answer

bool holdsRepository(const QString& folder) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::path((folder + QStringLiteral("/.git")).toStdString()),
                                   error);
}
} // namespace

MountedRepositories::MountedRepositories(HostSystem host, Shell& shell, SSHFSMounter& mounter,
                                         Connections& connections, Reporter& report)
    : m_host(std::move(host)), m_shell(shell), m_mounter(mounter), m_report(report) {
    connect(&connections, &Connections::connectionChanged, this, &MountedRepositories::trustMounted);
    connect(&connections, &Connections::handedOver, this, &MountedRepositories::tellAbout);
}

QCoro::Task<> MountedRepositories::look() {
    m_problem.clear();
    return readState();
}

QCoro::Task<> MountedRepositories::readState() {
    const QPointer<MountedRepositories> guard(this);
    const bool on = co_await GitSettings::areOn(m_host, m_shell);
    if (!guard)
        co_return;
    m_on = on;
    trustMounted();
    Q_EMIT changed();
}

void MountedRepositories::setOn(bool on) {
    if (on == isOn())
        return;
    const bool underWay = m_wanted.has_value();
    m_wanted = on;
    Q_EMIT changed();
    if (!underWay)
        applyWish();
}

QCoro::Task<> MountedRepositories::applyWish() {
    const QPointer<MountedRepositories> guard(this);
    bool wanted = false;
    do {
        wanted = isOn();
        m_problem.clear();
        const OperationTexts texts{
            .begin = {}, .failure = QStringLiteral("Die Git-Einstellungen konnten nicht geändert werden: ")};
        const std::function<QCoro::Task<Ending>()> work = [this, wanted] { return apply(wanted); };
        co_await m_report.run(texts, work);
        if (!guard)
            co_return;
        co_await readState();
        if (!guard)
            co_return;
    } while (isOn() != wanted && m_problem.isEmpty()); // the user has changed it again meanwhile
    m_wanted.reset();
    Q_EMIT changed();
}

QCoro::Task<Ending> MountedRepositories::apply(bool on) {
    try {
        const QStringList folders = mountedFolders();
        if (on)
            co_await GitSettings::turnOn(m_host, m_shell, folders);
        else
            co_await GitSettings::turnOff(m_host, m_shell);
    } catch (const Failure& failure) {
        m_problem = failure.description();
        throw;
    }
    co_return Ending{on ? QStringLiteral("Git ist für verbundene Projekte eingestellt.")
                        : QStringLiteral("Die Git-Einstellungen sind wieder entfernt.")};
}

QCoro::Task<> MountedRepositories::tellAbout(QString domain) {
    const QPointer<MountedRepositories> guard(this);
    if (m_told || isOn() || !GitSettings::canBeOn(m_host))
        co_return;
    const MountSession session = m_mounter.sessions().value(domain);
    const QString documents = session.mountPoint + QLatin1Char('/') + session.project.documentFolder();
    const std::function<bool()> question = [root = session.mountPoint, documents] {
        return holdsRepository(root) || holdsRepository(documents);
    };
    const std::optional<QFuture<bool>> answer = m_mounter.ask(domain, question);
    if (!answer)
        co_return;
    const QFuture<bool> found = *answer;
    const bool answered = co_await Async::finishesWithin(found, questionLimit);
    if (!guard || !answered || !found.result())
        co_return;
    co_await readState(); // it may have been turned on by hand
    if (!guard || m_told || isOn())
        co_return;
    m_told = true;
    m_report.log(QStringLiteral("Git kann in %1 schneller sein: siehe Einstellungen.").arg(domain),
                 ActivityLogLevel::info);
}

void MountedRepositories::trustMounted() {
    if (m_on && !GitSettings::trust(m_host, mountedFolders()))
        m_report.log(QStringLiteral("Die Git-Einstellungen konnten nicht gespeichert werden: %1")
                         .arg(m_host.privateFolder),
                     ActivityLogLevel::error);
}

QStringList MountedRepositories::mountedFolders() const {
    QStringList folders;
    for (const MountSession& session : m_mounter.sessions())
        folders += {session.domain, session.domain + QLatin1Char('/') + session.project.documentFolder()};
    folders.sort();
    return folders;
}
