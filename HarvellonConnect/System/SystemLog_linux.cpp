#include "System/SystemLog.h"

void installSystemLog() {}
