#pragma once

#include <QString>

/// Deletes the key pair that earlier versions wrote into the user's SSH folder. Deletes nothing else there
/// and ignores errors.
void removeLegacyKeyPair(const QString& homeFolder);
