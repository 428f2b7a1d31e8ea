#pragma once

#include "sandbox/Faults.h"
#include "sandbox/Identities.h"
#include "sandbox/Sites.h"
#include "sandbox/TokenLedger.h"
#include "sandbox/WebServer.h"
#include "sandbox/ssh/SshServer.h"

#include <QList>
#include <QLockFile>
#include <QString>

#include <memory>

namespace sandbox {

struct Options {
    QString folder;            ///< holds everything; kept between runs
    int generatedProjects = 0; ///< instead of the dozen for each person
    bool ssh = true;           ///< whether SSH hosts are wanted
};

/// The platform in small: identity server, directory, web sites and SSH hosts, on loopback addresses only.
/// The web server has threads of its own; this object lives on one thread and ends everything with it.
class Sandbox {
  public:
    using Endpoint = sandbox::Endpoint;

    /// Starts everything. Throws std::runtime_error. Where SSH hosts are wanted and cannot be had, it says so
    /// on standard error and goes on without them.
    explicit Sandbox(const Options& options);
    Q_DISABLE_COPY_MOVE(Sandbox)

    [[nodiscard]] QString server() const; ///< http://127.0.0.1:<port>

    /// Every project's site, under one address.
    [[nodiscard]] const Sites& sites() const { return *m_sites; }

    [[nodiscard]] bool hasSsh() const { return m_hasSsh; }

    [[nodiscard]] SshServer& ssh() { return m_ssh; }

    [[nodiscard]] QString treeRoot() const { return m_folder + QStringLiteral("/hosts"); }

    [[nodiscard]] const QList<Identity>& people() const { return m_identities; }

    /// Makes an endpoint misbehave until the next call. Any thread, as for all that follows.
    void setFault(Endpoint endpoint, const Fault& fault) { m_faults.set(endpoint, fault); }

    /// All access tokens become invalid; refresh tokens stay good.
    void expireTokens() { m_ledger.expireAccessTokens(); }

    void revokeAll() { m_ledger.revokeAll(); }

    /// Valid tokens without the detour through a browser.
    [[nodiscard]] IssuedTokens signIn(const QString& identity) { return m_ledger.grant(identity); }

    /// The requests so far to `path`, or all of them.
    [[nodiscard]] QList<RecordedRequest> requests(const QByteArray& path = {}) const {
        return m_faults.requests(path);
    }

  private:
    void startSsh();

    const QString m_folder;
    QLockFile m_lock;
    const QList<Identity> m_identities;
    TokenLedger m_ledger;
    Faults m_faults;
    SshServer m_ssh;
    bool m_hasSsh = false;
    std::unique_ptr<WebServer> m_web;
    std::unique_ptr<Sites> m_sites;
};

} // namespace sandbox
