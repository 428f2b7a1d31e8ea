#pragma once

#include <cstdint>

#define iokit_common_msg(message) (static_cast<uint32_t>(0xe0000000U | (message)))
#define kIOMessageCanSystemSleep iokit_common_msg(0x270)
#define kIOMessageSystemWillSleep iokit_common_msg(0x280)
#define kIOMessageSystemHasPoweredOn iokit_common_msg(0x300)
