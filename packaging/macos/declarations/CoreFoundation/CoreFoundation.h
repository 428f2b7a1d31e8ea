#pragma once

#include <cstddef>
#include <cstdint>

using Boolean = unsigned char;
using OSStatus = int32_t;
using CFIndex = long;
using CFTypeID = unsigned long;
using CFTypeRef = const void*;
using CFPropertyListRef = CFTypeRef;
using CFAllocatorRef = const struct __CFAllocator*;
using CFArrayRef = const struct __CFArray*;
using CFStringRef = const struct __CFString*;
using CFDataRef = const struct __CFData*;
using CFBooleanRef = const struct __CFBoolean*;
using CFDictionaryRef = const struct __CFDictionary*;
using CFMutableDictionaryRef = struct __CFDictionary*;
using CFRunLoopRef = struct __CFRunLoop*;
using CFRunLoopSourceRef = struct __CFRunLoopSource*;
using CFRunLoopMode = CFStringRef;

struct CFArrayCallBacks;
struct CFDictionaryKeyCallBacks;
struct CFDictionaryValueCallBacks;

extern "C" {
extern const CFBooleanRef kCFBooleanTrue;
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;
extern const CFRunLoopMode kCFRunLoopCommonModes;

void CFRelease(CFTypeRef cf);
CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeID CFDataGetTypeID();
CFTypeID CFBooleanGetTypeID();
CFTypeID CFStringGetTypeID();
Boolean CFBooleanGetValue(CFBooleanRef boolean);
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex numValues,
                         const CFArrayCallBacks* callBacks);
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks);
void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value);
void CFPreferencesSetAppValue(CFStringRef key, CFTypeRef value, CFStringRef applicationID);
Boolean CFPreferencesAppValueIsForced(CFStringRef key, CFStringRef applicationID);
CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID);
Boolean CFPreferencesAppSynchronize(CFStringRef applicationID);
CFRunLoopRef CFRunLoopGetMain();
void CFRunLoopAddSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode);
void CFRunLoopRemoveSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode);
void CFRunLoopSourceInvalidate(CFRunLoopSourceRef source);
CFStringRef __CFStringMakeConstantString(const char* text);
}

#define CFSTR(text) __CFStringMakeConstantString("" text "")
