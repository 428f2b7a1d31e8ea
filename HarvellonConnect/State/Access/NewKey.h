#pragma once

#include "Actions/ActionContext.h"
#include "Mounting/Access/OwnKey.h"

#include <QString>

/// What can be made so that ssh has a key to offer, in words for a button: the public half of a key that ssh
/// cannot read by itself, or a new key. Empty for nothing. Any thread.
[[nodiscard]] QString keyOffer(const OwnKey& own);

/// Has ssh-keygen make it, in a terminal of the user, so that the question for a passphrase is ssh's own. A
/// file that exists, or appears meanwhile, is never replaced. Never fails: what does not work is seen in the
/// terminal or logged. Main thread.
void makeKeyInTerminal(const ActionContext& context, const OwnKey& own);

/// Copies the key and logs where it belongs. Main thread.
void copyPublicKey(const ActionContext& context, const PublicKey& key);
