#pragma once

#include "Directory/ApplicationsResponse.h"
#include "State/ProjectListModel.h"
#include "System/Reporter.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

#include <functional>
#include <optional>

class OAuthManager;
class ProjectAPI;

/// The state of the last project load.
namespace ConnectionStatus {
Q_NAMESPACE
QML_ELEMENT
enum class Case { idle, checking, success, failure };
Q_ENUM_NS(Case)
} // namespace ConnectionStatus

/// Loads the signed-in user's profile and projects, and owns both.
///
///     refresh() ──▶ no token ─────────────────────────────────▶ failure
///         │ directory asked
///         ├── answer ──▶ sorted on a worker thread ───────────▶ success
///         ├── 401, 403 ──▶ token renewed ──▶ asked once more ─▶ success or failure
///         └── anything else ──────────────────────────────────▶ failure
///
/// A load that `discard` overtakes publishes nothing. Main thread.
class ProjectLoading : public QObject {
    Q_OBJECT

  public:
    using TakeToken = std::function<QCoro::Task<QString>()>;

    /// `rows` shows the list that is loaded. `takeToken` sees to it that the active account's tokens are in
    /// use, and yields its access token, empty when there is none. All outlive this.
    ProjectLoading(Reporter& report, OAuthManager& oauth, ProjectAPI& api, ProjectListModel& rows,
                   TakeToken takeToken);

    /// Loads profile and projects, with one renewal of the token where it is refused. Never fails: every
    /// outcome is published and logged. Loads may overlap; the last to finish wins.
    QCoro::Task<> refresh();

    /// Another account is active now: loads that are under way end without publishing.
    void discard() { ++m_generation; }

    /// Empties the list and the profile after the last account was removed.
    void clear();
    void setUserProfile(std::optional<UserProfile> profile);

    [[nodiscard]] const QList<Project>& projects() const { return m_rows.projects(); }

    [[nodiscard]] std::optional<Project> project(const QString& domain) const;

    [[nodiscard]] bool isLoading() const { return m_loads > 0; }

    [[nodiscard]] ConnectionStatus::Case connectionStatus() const { return m_connectionStatus; }

    [[nodiscard]] QString connectionFailure() const { return m_connectionFailure; } ///< of the failure case

    [[nodiscard]] const std::optional<UserProfile>& userProfile() const { return m_userProfile; }

  Q_SIGNALS:
    void projectsChanged();
    void isLoadingChanged();
    void connectionStatusChanged();
    void userProfileChanged();

  private:
    QCoro::Task<Ending> load(int generation);
    QCoro::Task<std::optional<ApplicationsResponse>> fetchUnlessRefused(QString token);
    QCoro::Task<Ending> renewAndLoad(QString refusedToken, int generation);
    QCoro::Task<Ending> publish(ApplicationsResponse response, int generation);
    void publishFailure(const QString& reason);
    void setProjects(const ProjectList& list);
    void setLoading(int change);
    void setConnectionStatus(ConnectionStatus::Case status, const QString& failure = {});

    Reporter& m_report;
    OAuthManager& m_oauth;
    ProjectAPI& m_api;
    ProjectListModel& m_rows;
    TakeToken m_takeToken;
    int m_loads = 0; ///< under way
    int m_generation = 0;
    ConnectionStatus::Case m_connectionStatus = ConnectionStatus::Case::idle;
    QString m_connectionFailure;
    std::optional<UserProfile> m_userProfile;
};
