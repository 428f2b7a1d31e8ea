#pragma once

#include <CoreFoundation/CoreFoundation.h>

using SCDynamicStoreRef = const struct __SCDynamicStore*;
using SCDynamicStoreCallBack = void (*)(SCDynamicStoreRef store, CFArrayRef changedKeys, void* info);

struct SCDynamicStoreContext {
    CFIndex version;
    void* info;
    const void* (*retain)(const void* info);
    void (*release)(const void* info);
    CFStringRef (*copyDescription)(const void* info);
};

extern "C" {
SCDynamicStoreRef SCDynamicStoreCreate(CFAllocatorRef allocator, CFStringRef name, SCDynamicStoreCallBack callout,
                                       SCDynamicStoreContext* context);
Boolean SCDynamicStoreSetNotificationKeys(SCDynamicStoreRef store, CFArrayRef keys, CFArrayRef patterns);
CFRunLoopSourceRef SCDynamicStoreCreateRunLoopSource(CFAllocatorRef allocator, SCDynamicStoreRef store,
                                                     CFIndex order);
int SCError();
const char* SCErrorString(int status);
}
