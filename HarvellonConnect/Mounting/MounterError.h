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

    /// `text`: the path, the reason or the host that the case speaks of.
    explicit MounterError(Case error, QString text = {}) : m_case(error), m_text(std::move(text)) {}

    /// The failure of an sshfs that ended by itself after writing `errors`, trimmed, to standard error.
    static MounterError fromSSHFS(const QString& errors, const QString& host);

    [[nodiscard]] Case error() const { return m_case; }

    [[nodiscard]] QString description() const override;

  private:
    Case m_case;
    QString m_text;
};
