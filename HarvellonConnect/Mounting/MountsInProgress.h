#pragma once

#include "Mounting/MountAttempt.h"
#include "Mounting/MountSession.h"
#include "Mounting/MounterError.h"

#include <QFuture>
#include <QHash>
#include <QPromise>
#include <QString>

#include <exception>
#include <memory>
#include <optional>

/// What a mounter is doing now, by domain.
struct MountsInProgress {
    QHash<QString, std::shared_ptr<MountAttempt>> attempts;
    QHash<QString, QFuture<UnmountResult>> unmounts;

    [[nodiscard]] std::optional<QFuture<UnmountResult>> unmountOf(const QString& domain) const {
        const auto unmount = unmounts.constFind(domain);
        return unmount == unmounts.constEnd() ? std::nullopt : std::optional(*unmount);
    }
};

/// Registers an attempt for as long as it exists. Its end tells everyone who waits for the attempt.
class MountInProgress {
  public:
    MountInProgress(std::shared_ptr<MountsInProgress> running, std::shared_ptr<MountAttempt> attempt)
        : m_running(std::move(running)), m_attempt(std::move(attempt)) {
        m_running->attempts.insert(m_attempt->domain(), m_attempt);
    }

    ~MountInProgress() {
        m_running->attempts.remove(m_attempt->domain());
        m_attempt->markFinished();
    }

    Q_DISABLE_COPY_MOVE(MountInProgress)

  private:
    const std::shared_ptr<MountsInProgress> m_running;
    const std::shared_ptr<MountAttempt> m_attempt;
};

/// Registers an unmount for as long as it exists. Its end tells everyone who waits for the unmount how it
/// went.
class UnmountInProgress {
  public:
    UnmountInProgress(std::shared_ptr<MountsInProgress> running, QString domain)
        : m_running(std::move(running)), m_domain(std::move(domain)) {
        m_finished.start();
        m_running->unmounts.insert(m_domain, m_finished.future());
    }

    ~UnmountInProgress() {
        m_running->unmounts.remove(m_domain);
        if (m_failure)
            m_finished.setException(std::make_exception_ptr(*m_failure));
        else
            m_finished.addResult(result);
        m_finished.finish();
    }

    Q_DISABLE_COPY_MOVE(UnmountInProgress)

    /// Throws the failure here and at everyone who waits.
    [[noreturn]] void fail(const MounterError& failure) {
        m_failure = failure;
        throw failure;
    }

    UnmountResult result = UnmountResult::ended;

  private:
    const std::shared_ptr<MountsInProgress> m_running;
    const QString m_domain;
    std::optional<MounterError> m_failure;
    QPromise<UnmountResult> m_finished;
};
