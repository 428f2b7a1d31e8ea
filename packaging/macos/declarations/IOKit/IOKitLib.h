#pragma once

#include <CoreFoundation/CoreFoundation.h>

using mach_port_t = unsigned int;
using kern_return_t = int;
using IOReturn = kern_return_t;
using io_object_t = mach_port_t;
using io_connect_t = io_object_t;
using io_service_t = io_object_t;
using IONotificationPortRef = struct IONotificationPort*;
using IOServiceInterestCallback = void (*)(void* refcon, io_service_t service, uint32_t messageType,
                                           void* messageArgument);

#define MACH_PORT_NULL 0

extern "C" {
CFRunLoopSourceRef IONotificationPortGetRunLoopSource(IONotificationPortRef notify);
void IONotificationPortDestroy(IONotificationPortRef notify);
kern_return_t IOServiceClose(io_connect_t connect);
}
