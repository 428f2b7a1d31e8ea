#pragma once

#include "Mounting/Access/OwnKey.h"
#include "Mounting/Setup/SSHFSReadiness.h"
#include "State/GuidanceQuestion.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QtQmlIntegration>

#include <optional>

struct ActionContext;

/// What a first mount needs of this machine, for a user who has no project yet: a key that ssh offers, and
/// sshfs. Main thread.
class SetupSteps : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Belongs to AppState")
    Q_PROPERTY(State key READ key NOTIFY changed)
    Q_PROPERTY(State sshfs READ sshfs NOTIFY changed)
    /// The words for what `makeKey` makes; empty for nothing.
    Q_PROPERTY(QString keyOffer READ keyOffer NOTIFY changed)

  public:
    enum class State { unknown, missing, broken, ready };
    Q_ENUM(State)

    /// `server`: whose name ssh's configuration is read for. The references outlive this.
    SetupSteps(const ActionContext& context, const QString& server, GuidanceQuestion& guidance);

    /// Looks for both anew, once more where that is under way already. What is known stays until then.
    Q_INVOKABLE void look();
    /// Copies the public key.
    Q_INVOKABLE void copyKey();
    /// Has ssh make a key, or the public half of one, in a terminal.
    Q_INVOKABLE void makeKey();
    /// Opens the alert that tells how sshfs is installed or repaired.
    Q_INVOKABLE void explainSSHFS();

    /// A public key alone is ready; broken: there is a private one only.
    [[nodiscard]] State key() const;
    [[nodiscard]] State sshfs() const;

    [[nodiscard]] QString keyOffer() const;

  Q_SIGNALS:
    void changed();

  private:
    QCoro::Task<> lookForKey();
    QCoro::Task<> lookForSSHFS();
    void looked();

    const ActionContext& m_context;
    const QString m_login;
    GuidanceQuestion& m_guidance;
    std::optional<OwnKey> m_key;
    std::optional<SSHFSReadiness> m_sshfs;
    int m_underWay = 0;
    bool m_lookAgain = false; ///< after what is under way
};
