#pragma once

#include "sandbox/Authorization.h"
#include "sandbox/Identities.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace sandbox {

/// The sign-in page for a request for authorization, which is handed on with the choice as `identity` or
/// `cancel`.
QByteArray signInPage(const QList<Identity>& identities, const Parameters& request);

/// The page for a request that must not be answered with a redirect.
QByteArray errorPage(const QString& reason);

} // namespace sandbox
