#pragma once

#include "System/Failure.h"

#include <QString>

/// Why a project could not be mounted or unmounted. The description is the sentence shown to the user.
class MounterError : public Failure {
  public:
    enum class Case {
        mountPointOccupied,
        mountFailed,
        authenticationFailed,
        unmountFailed,
        sshfsNotFound,
        mountTimeout
    };

    /// `text`: the path (mountPointOccupied), the server's name (authenticationFailed) or the reason.
    explicit MounterError(Case error, QString text = {}) : m_case(error), m_text(std::move(text)) {}

    /// The error for an sshfs that ended by itself; `errors` is its standard error, trimmed.
    static MounterError fromSSHFS(const QString& errors, const QString& server);

    [[nodiscard]] Case error() const { return m_case; }

    /// Whether the way into the server may be what failed.
    [[nodiscard]] bool concernsAccess() const {
        return m_case == Case::authenticationFailed || m_case == Case::mountFailed ||
               m_case == Case::mountTimeout;
    }

    [[nodiscard]] QString description() const override;

  private:
    Case m_case;
    QString m_text;
};

/// What the operating system said when a folder or a file of a mount could not be made, or sshfs not started.
class SystemError : public TextFailure {
  public:
    using TextFailure::TextFailure;

    /// For a file or folder.
    SystemError(const QString& path, const QString& reason)
        : TextFailure(QStringLiteral("%1: %2").arg(path, reason)) {}
};
