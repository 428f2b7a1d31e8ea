#include "State/Setup/SetupSteps.h"

#include "Actions/ActionContext.h"
#include "State/Access/NewKey.h"

#include <QPointer>
#include <QUrl>

SetupSteps::SetupSteps(const ActionContext& context, const QString& server, GuidanceQuestion& guidance)
    : m_context(context), m_login(QStringLiteral("ssh@") + QUrl(server).host()), m_guidance(guidance) {}

void SetupSteps::look() {
    if (m_underWay > 0) {
        m_lookAgain = true; // what is under way may have passed what has changed since
        return;
    }
    m_underWay = 2;
    lookForKey();
    lookForSSHFS();
}

QCoro::Task<> SetupSteps::lookForKey() {
    const QPointer<SetupSteps> guard(this);
    const OwnKey key = co_await findOwnKey(m_context.host, m_context.shell, m_login);
    if (!guard)
        co_return;
    m_key = key;
    looked();
}

QCoro::Task<> SetupSteps::lookForSSHFS() {
    const QPointer<SetupSteps> guard(this);
    const SSHFSReadiness sshfs = co_await diagnoseSSHFS(m_context.host, m_context.shell);
    if (!guard)
        co_return;
    m_sshfs = sshfs;
    looked();
}

void SetupSteps::looked() {
    --m_underWay;
    Q_EMIT changed();
    if (m_underWay == 0 && std::exchange(m_lookAgain, false))
        look();
}

SetupSteps::State SetupSteps::key() const {
    if (!m_key)
        return State::unknown;
    if (m_key->key)
        return State::ready;
    return m_key->unreadable.isEmpty() ? State::missing : State::broken;
}

SetupSteps::State SetupSteps::sshfs() const {
    if (!m_sshfs)
        return State::unknown;
    switch (m_sshfs->state) {
    case SSHFSReadiness::State::notInstalled:
        return State::missing;
    case SSHFSReadiness::State::notStarting:
        return State::broken;
    case SSHFSReadiness::State::ready:
        return State::ready;
    }
    Q_UNREACHABLE();
}

QString SetupSteps::keyOffer() const {
    return m_key ? ::keyOffer(*m_key) : QString();
}

void SetupSteps::copyKey() {
    if (key() == State::ready)
        copyPublicKey(m_context, *m_key->key);
}

void SetupSteps::makeKey() {
    if (m_key)
        makeKeyInTerminal(m_context, *m_key);
}

void SetupSteps::explainSSHFS() {
    m_guidance.show(sshfs() == State::broken ? repairGuidance(m_context.host)
                                             : setupGuidance(m_context.host));
}
