#pragma once

#include <QString>

/// Deletes the key pair that earlier versions wrote into the user's SSH folder. Touches nothing else there,
/// and never fails.
void removeLegacyKeyPair(const QString& homeFolder);
