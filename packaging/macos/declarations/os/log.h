#pragma once

#include <cstdint>

using os_log_t = struct os_log_s*;
enum os_log_type_t : uint8_t {
    OS_LOG_TYPE_DEFAULT = 0x00,
    OS_LOG_TYPE_DEBUG = 0x02,
    OS_LOG_TYPE_ERROR = 0x10,
    OS_LOG_TYPE_FAULT = 0x11
};

extern "C" {
os_log_t os_log_create(const char* subsystem, const char* category);
void os_log_with_type(os_log_t log, os_log_type_t type, const char* format, ...)
    __attribute__((format(os_log, 3, 4)));
}
