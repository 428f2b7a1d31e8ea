#include "Desktop/Native/Appearance.h"

// On macOS the palette follows the system's appearance, so there is nothing else to watch.
void Appearance::watchSettings() {}
