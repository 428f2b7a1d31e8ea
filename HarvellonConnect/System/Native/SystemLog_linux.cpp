#include "System/Native/SystemLog.h"

void installSystemLog() {}
