#pragma once

#include "Actions/ActionContext.h"
#include "Mounting/Access/AccessCheck.h"
#include "Mounting/Access/OwnKey.h"
#include "Mounting/Access/ServerKey.h"

#include <QCoroTask>
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QtQmlIntegration>

#include <optional>

/// Help with a server that does not let a project in: the key to enter there, a check that tells which step
/// fails, and the server's own key where it has changed.
///
///     a mount fails ──▶ offered, as long as its failure is the last error
///                          │ show()
///                          ▼
///                        open: the key ssh offers is looked for, anew when a file appears
///                          │ check() ──▶ one sentence ── the server's key is not the known one:
///                          │                              both are shown ──trust()──▶ asked ──trust()──▶
///                          entered, ▼                                                          and checked
///                          again
///                        close()
///
/// What still runs when the help is closed changes nothing any more. Main thread.
class AccessHelp : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to AppState")

    Q_PROPERTY(bool offered READ isOffered NOTIFY changed)
    Q_PROPERTY(bool open READ isOpen NOTIFY openChanged)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString keyText READ keyText NOTIFY changed)
    Q_PROPERTY(bool keyIsKnown READ keyIsKnown NOTIFY changed)
    /// The words for what `makeKey` makes; empty for nothing.
    Q_PROPERTY(QString keyOffer READ keyOffer NOTIFY changed)
    Q_PROPERTY(bool checking READ isChecking NOTIFY changed)
    Q_PROPERTY(bool works READ works NOTIFY changed)
    Q_PROPERTY(QString finding READ finding NOTIFY changed)
    Q_PROPERTY(QString knownServerKeys READ knownServerKeys NOTIFY changed)
    Q_PROPERTY(QString serverKey READ serverKey NOTIFY changed)
    Q_PROPERTY(bool asksForTrust READ asksForTrust NOTIFY changed)

  public:
    /// `context` outlives this.
    explicit AccessHelp(const ActionContext& context, AccessLimits limits = {});

    /// The project could not be mounted; `failure` is what the user is told.
    void offer(const Project& project, const QString& failure);
    /// The help is offered beside the failure it was made for, and no other.
    void setLastError(const std::optional<QString>& error);

    Q_INVOKABLE void show();
    Q_INVOKABLE void close();
    Q_INVOKABLE void copyKey();
    Q_INVOKABLE void makeKey();
    Q_INVOKABLE void check();
    /// Asks at the first call; the second enters the server's key that is shown.
    Q_INVOKABLE void trust();

    [[nodiscard]] bool isOffered() const { return m_project && m_lastError == m_failure; }

    [[nodiscard]] bool isOpen() const { return m_open; }

    [[nodiscard]] QString title() const;

    /// The failure, to the letter.
    [[nodiscard]] QString text() const { return m_failure; }

    /// Which key would be copied, or why there is none.
    [[nodiscard]] QString keyText() const;

    [[nodiscard]] bool keyIsKnown() const { return m_own && m_own->key; }

    [[nodiscard]] QString keyOffer() const;

    [[nodiscard]] bool isChecking() const { return m_checking; }

    [[nodiscard]] bool works() const { return m_works; }

    /// How the check has ended or what it waits for; empty before the first.
    [[nodiscard]] QString finding() const { return m_finding; }

    /// The fingerprints by which the server is known and the one it presents, where they differ. The first is
    /// empty for an unknown server, both while there is nothing to decide.
    [[nodiscard]] QString knownServerKeys() const;
    [[nodiscard]] QString serverKey() const;

    [[nodiscard]] bool asksForTrust() const { return m_asksForTrust; }

  Q_SIGNALS:
    void changed();
    void openChanged();

  private:
    QCoro::Task<> lookForKey(int visit);
    QCoro::Task<> runCheck(int visit);
    QCoro::Task<> compareServerKeys(int visit, AccessStep step);
    QCoro::Task<> enterServerKey(int visit);
    void beginCheck();
    void endCheck(const QString& finding);

    const ActionContext& m_context;
    const AccessLimits m_limits;
    std::optional<QString> m_lastError;
    std::optional<Project> m_project;
    QString m_failure;
    bool m_open = false;
    int m_visit = 0; ///< counts the openings; what an earlier one has begun is dropped
    std::optional<OwnKey> m_own;
    bool m_copied = false;
    QFileSystemWatcher m_keyFolders; ///< while open
    QTimer m_lookAgain;
    bool m_checking = false;
    bool m_works = false;
    QString m_finding;
    std::optional<ServerKey> m_serverKey;
    bool m_asksForTrust = false;
};
