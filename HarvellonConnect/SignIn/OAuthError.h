#pragma once

#include "System/Failure.h"

#include <QString>

/// Why a sign-in or a renewal did not succeed. The description is the sentence shown to the user.
class OAuthError : public Failure {
  public:
    enum class Case {
        listenerFailed,
        tokenExchangeFailed,
        refreshFailed,
        alreadyAuthenticating,
        stateMismatch,
        noCodeReceived,
        timeout
    };

    /// `text`: the reason, for the first three cases.
    explicit OAuthError(Case error, QString text = {}) : m_case(error), m_text(std::move(text)) {}

    [[nodiscard]] Case error() const { return m_case; }

    [[nodiscard]] QString description() const override;

  private:
    Case m_case;
    QString m_text;
};
