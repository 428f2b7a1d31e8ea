#pragma once

#include "Actions/ActionContext.h"
#include "Mounting/Access/OfferedKey.h"

#include <QString>

/// Has ssh-keygen make a key pair at `place` and `place`.pub, in a terminal of the user, so that the question
/// for a passphrase is ssh's own. A file that exists, or appears meanwhile, is never replaced. Never fails:
/// what does not work is seen in the terminal or logged. Main thread.
void makeKeyInTerminal(const ActionContext& context, const QString& place);

/// Copies the key and logs where it belongs. Main thread.
void copyPublicKey(const ActionContext& context, const PublicKey& key);
