#pragma once

#include <IOKit/IOKitLib.h>

extern "C" {
io_connect_t IORegisterForSystemPower(void* refcon, IONotificationPortRef* thePortRef,
                                      IOServiceInterestCallback callback, io_object_t* notifier);
IOReturn IODeregisterForSystemPower(io_object_t* notifier);
IOReturn IOAllowPowerChange(io_connect_t kernelPort, intptr_t notificationID);
}
