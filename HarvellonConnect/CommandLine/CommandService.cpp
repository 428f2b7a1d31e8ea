#include "CommandLine/CommandService.h"

#include "Actions/ServerSearch.h"
#include "CommandLine/Opening.h"
#include "CommandLine/ProjectChoice.h"
#include "System/Async.h"

#include <QDeadlineTimer>
#include <QPointer>

#include <algorithm>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {
/// The first load begins shortly after the start; before that nothing tells whether there will be one.
constexpr std::chrono::milliseconds startLimit = 3s;
constexpr std::chrono::milliseconds loadLimit = 20s;

RequestError ending() {
    return {ExitStatus::failed, QStringLiteral("Harvellon Connect wird beendet.")};
}
} // namespace

CommandService::CommandService(AppState& state, Panel panel, QString versionText)
    : m_state(state), m_parts(state.parts()), m_panel(std::move(panel)),
      m_versionText(std::move(versionText)) {}

QCoro::Task<Answer> CommandService::answer(Request request) {
    switch (request.command) {
    case Request::Command::show:
        follow(request.text);
        co_return Answer{};
    case Request::Command::toggle:
        m_panel.toggle();
        co_return Answer{};
    case Request::Command::list:
        co_return co_await list(request.json);
    case Request::Command::status:
        co_return co_await status(request.json);
    case Request::Command::connect: {
        const Project project = co_await choose(request.project);
        co_return co_await connect(project);
    }
    case Request::Command::disconnect:
        co_return co_await disconnect(request.project);
    case Request::Command::open:
        co_return co_await open(request.project, request.target);
    case Request::Command::search:
        co_return co_await search(request.project, request.text);
    }
    co_return Answer{};
}

QCoro::Task<> CommandService::follow(QString link) {
    m_panel.show();
    const QString domain = domainInLink(link).toLower();
    if (domain.isEmpty())
        co_return;
    const QPointer<CommandService> guard(this);
    co_await untilListIsKnown();
    if (!guard)
        co_return;
    const QList<Project> all = projects();
    const auto listed = std::find_if(all.begin(), all.end(), [&domain](const Project& project) {
        return project.domain.toLower() == domain;
    });
    if (listed != all.end())
        m_panel.select(listed->domain);
    else if (!m_state.projects().isEmpty()) // without the list nobody knows
        m_panel.select(domain);
}

QCoro::Task<> CommandService::untilListIsKnown() {
    using Status = ConnectionStatus::Case;
    const QPointer<AppState> state(&m_state);
    const QDeadlineTimer start(startLimit);
    const QDeadlineTimer load(loadLimit);
    while (state && state->projects().isEmpty()) {
        const Status status = state->connectionStatus();
        const QDeadlineTimer& limit = status == Status::idle ? start : load;
        if (status == Status::success || status == Status::failure || limit.hasExpired())
            co_return;
        const std::chrono::milliseconds remaining(limit.remainingTime() + 1);
        AppState* const watched = state.data();
        co_await Async::emission(watched, &AppState::connectionStatusChanged, remaining);
    }
}

/// What has a row in the panel.
QList<Project> CommandService::projects() const {
    QList<Project> all = sortedByDomain(m_parts.connections.keptProjects());
    all.removeIf([this](const Project& project) { return m_parts.loading.project(project.domain); });
    return all + m_state.projects();
}

void CommandService::throwWithoutList() const {
    if (m_parts.loading.connectionStatus() == ConnectionStatus::Case::success)
        return;
    if (!m_parts.oauth.accessToken())
        throw RequestError(ExitStatus::notReady, QStringLiteral("Bitte einloggen."));
    const QString failure = m_parts.loading.connectionFailure();
    throw RequestError(ExitStatus::failed,
                       failure.isEmpty() ? QStringLiteral("Die Projekte sind noch nicht geladen.") : failure);
}

QCoro::Task<Project> CommandService::choose(QString word) {
    const QPointer<CommandService> guard(this);
    co_await untilListIsKnown();
    if (!guard)
        throw ending();
    try {
        co_return chosenProject(projects(), word);
    } catch (const RequestError&) {
        if (m_state.projects().isEmpty()) // a project that is not there may be one that is not loaded
            throwWithoutList();
        throw;
    }
}

ListedProject CommandService::listed(const Project& project) const {
    using State = ListedProject::State;
    const RowState row = m_state.rowState(project.domain);
    const State state = row.connected         ? State::connected
                        : row.connectingSince ? State::connecting
                        : row.lost            ? State::lost
                                              : State::disconnected;
    return {project.domain, project.name.value_or(QString()), state,
            m_parts.sshfsMounter.mountPoint(project.domain).value_or(QString())};
}

QCoro::Task<Answer> CommandService::list(bool json) {
    const QPointer<CommandService> guard(this);
    co_await untilListIsKnown();
    if (!guard)
        throw ending();
    const QList<Project> all = projects();
    if (all.isEmpty())
        throwWithoutList();
    QList<ListedProject> rows;
    for (const Project& project : all)
        rows.append(listed(project));
    co_return Answer{.output = listingOf(rows, json)};
}

QCoro::Task<Answer> CommandService::status(bool json) {
    const QPointer<CommandService> guard(this);
    co_await untilListIsKnown();
    if (!guard)
        throw ending();
    ProgramStatus status{
        m_versionText, m_state.userName(), m_state.lastErrorText(), m_state.projectCount(), {}};
    for (const Project& project : projects()) {
        const ListedProject row = listed(project);
        if (row.state != ListedProject::State::disconnected)
            status.projects.append(row);
    }
    co_return Answer{
        m_state.signedIn() ? ExitStatus::done : ExitStatus::notReady, statusText(status, json), {}};
}

void CommandService::throwUnlessOffered(HoverTarget target, const QString& domain) const {
    if ((m_state.rowState(domain).offers & 1 << static_cast<int>(target)) == 0)
        throw RequestError(ExitStatus::notReady,
                           QStringLiteral("Für %1 ist das mit diesem Konto nicht möglich.").arg(domain));
}

QCoro::Task<Answer> CommandService::connect(Project project) {
    const QPointer<CommandService> guard(this);
    const bool wasMounted = m_parts.sshfsMounter.mountPoint(project.domain).has_value();
    Answer answer;
    answer.output = co_await mounted(project);
    answer.output += QLatin1Char('\n');
    if (guard)
        m_parts.marks.noteUse(project.domain);
    if (guard && !wasMounted)
        answer.error = m_state.lastErrorText(); // a warning; an error would have been thrown
    co_return answer;
}

/// Where the project is mounted, after it has been mounted where it was not. A mount that is under way is
/// waited for.
QCoro::Task<QString> CommandService::mounted(Project project) {
    const QString domain = project.domain;
    const QPointer<Connections> connections(&m_parts.connections);
    const QPointer<CommandService> guard(this);
    if (!m_parts.sshfsMounter.mountPoint(domain)) {
        throwUnlessOffered(HoverTarget::connect, domain);
        if (connections->connectingSince(domain)) {
            while (connections && connections->connectingSince(domain))
                co_await Async::emission(connections.data(), &Connections::connectingChanged, loadLimit);
        } else {
            co_await connections->connectOnly(project);
        }
    }
    if (!guard)
        throw ending();
    const std::optional<QString> folder = m_parts.sshfsMounter.mountPoint(domain);
    if (!folder)
        throw RequestError(ExitStatus::failed, m_state.lastError().value_or(
                                                   QStringLiteral("%1 ist nicht verbunden.").arg(domain)));
    co_return *folder;
}

/// Yields a warning, or nothing.
QCoro::Task<QString> CommandService::unmounted(QString domain) {
    if (!m_parts.sshfsMounter.mountPoint(domain) && !m_state.connectedDomains().contains(domain) &&
        !m_parts.connections.connectingSince(domain) && !m_parts.connections.isLost(domain))
        co_return {};
    const QPointer<CommandService> guard(this);
    co_await m_parts.connections.disconnect(domain, false);
    if (!guard)
        throw ending();
    const QString told = m_state.lastErrorText();
    if (m_state.connectedDomains().contains(domain)) // one that fails publishes nothing
        throw RequestError(ExitStatus::failed, told);
    // A warning names its project; the rest is about another one, or says that connecting was cancelled.
    co_return told.contains(domain) ? told : QString();
}

QCoro::Task<Answer> CommandService::disconnect(QString word) {
    QStringList domains;
    if (word.isEmpty()) {
        domains = m_parts.connections.connectingDomains();
        for (const Project& project : m_parts.connections.keptProjects())
            domains.append(project.domain);
        domains.removeDuplicates(); // one that was lost may be on its way back
    } else {
        const Project project = co_await choose(word);
        domains.append(project.domain);
    }
    // At once, because the client does not wait for one busy mount after the other.
    std::vector<QCoro::Task<QString>> ends;
    for (const QString& domain : std::as_const(domains))
        ends.push_back(unmounted(domain));
    Answer answer;
    QStringList told;
    for (QCoro::Task<QString>& end : ends) {
        try {
            const QString warning = co_await end;
            told.append(warning);
        } catch (const RequestError& error) {
            answer.exitStatus = error.exitStatus();
            told.append(error.description());
        }
    }
    told.removeAll(QString());
    told.removeDuplicates(); // one that ends well meets the last error of another
    answer.error = told.join(QLatin1Char('\n'));
    co_return answer;
}

QCoro::Task<Answer> CommandService::open(QString word, OpenTarget target) {
    const QPointer<CommandService> guard(this);
    const Project project = co_await choose(word);
    const Opening opening = openingOf(target);
    if (opening.needsMount)
        co_await mounted(project);
    if (!guard)
        throw ending();
    throwUnlessOffered(opening.target, project.domain);
    m_parts.marks.noteUse(project.domain);
    const QPointer<ActivityLog> log(m_state.activityLog());
    const QUuid last = log->entries().isEmpty() ? QUuid() : log->entries().constLast().id;
    co_await m_parts.actions.perform(opening.target, project, opening.alternative);
    if (!log)
        throw ending();
    co_return outcomeSince(*log, last);
}

QCoro::Task<Answer> CommandService::search(QString word, QString text) {
    const Project project = co_await choose(word);
    constexpr int trouble = 2; // of grep
    try {
        const SearchHits found = co_await searchOnServer(m_parts.context, project, text);
        Answer answer{found.hits.isEmpty() ? 1 : 0, {}, {}};
        for (const SearchHit& hit : found.hits)
            answer.output += hit.asLine() + QLatin1Char('\n');
        if (found.more)
            answer.error = QStringLiteral("Es gibt mehr Treffer, als hier stehen.");
        if (found.incomplete) {
            answer.exitStatus = trouble;
            answer.error = QStringLiteral("Nicht alle Dateien konnten durchsucht werden.");
        }
        co_return answer;
    } catch (const Failure& failure) {
        co_return Answer{trouble, {}, failure.description()};
    }
}
