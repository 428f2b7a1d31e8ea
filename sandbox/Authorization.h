#pragma once

#include "sandbox/Identities.h"

#include <QByteArray>
#include <QMap>
#include <QString>

namespace sandbox {

using Parameters = QMap<QString, QString>;

/// The only program that may ask for tokens.
bool isKnownClient(const Parameters& parameters);

/// What is wrong with a request for authorization, as a sentence for its reader; empty when nothing is.
QString refusal(const Parameters& request);

/// Where the browser goes on: the request's own address with `name`=`value` and its state. Only for a request
/// without a refusal.
QByteArray callbackAddress(const Parameters& request, const QString& name, const QString& value);

/// The ID token, which names the user. Not signed.
QString idToken(const Identity& identity);

} // namespace sandbox
