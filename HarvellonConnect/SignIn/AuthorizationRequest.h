#pragma once

#include <QString>
#include <QUrl>

/// Identifies this program to the identity server.
inline const QString oauthClientID = QStringLiteral("018f4c2a-7b3d-7e91-a5c6-2d8e0f1b3a47");

/// The page on which the user signs in; `challenge` is of PKCE's method S256. Throws
/// OAuthError::listenerFailed when `endpoint` is no address.
QUrl authorizationAddress(const QString& endpoint, const QString& redirectURI, const QString& state,
                          const QString& challenge);
