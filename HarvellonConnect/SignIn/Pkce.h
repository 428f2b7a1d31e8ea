#pragma once

#include <QByteArray>
#include <QString>

/// The proof that the program which redeems a code is the one that asked for it.
namespace Pkce {

/// `bytes` secure random bytes as base64url text without padding.
QString randomText(int bytes);

/// The S256 challenge of `verifier`.
QString challenge(const QString& verifier);

} // namespace Pkce
