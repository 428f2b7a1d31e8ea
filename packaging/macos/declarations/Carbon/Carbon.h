#pragma once

#include <CoreFoundation/CoreFoundation.h>

using UInt32 = unsigned int;
using OSType = unsigned int;
using ItemCount = unsigned long;
using OptionBits = unsigned int;
using EventHandlerCallRef = struct OpaqueEventHandlerCallRef*;
using EventHandlerRef = struct OpaqueEventHandlerRef*;
using EventHotKeyRef = struct OpaqueEventHotKeyRef*;
using EventRef = struct OpaqueEventRef*;
using EventTargetRef = struct OpaqueEventTargetRef*;
using EventHandlerUPP = OSStatus (*)(EventHandlerCallRef, EventRef, void*);

struct EventTypeSpec {
    OSType eventClass;
    UInt32 eventKind;
};

struct EventHotKeyID {
    OSType signature;
    UInt32 id;
};

enum { noErr = 0 };
enum { kEventClassKeyboard = 0x6b657962, kEventHotKeyPressed = 5, kEventHotKeyNoOptions = 0, kVK_F19 = 0x50 };

extern "C" {
EventTargetRef GetEventDispatcherTarget();
OSStatus InstallEventHandler(EventTargetRef inTarget, EventHandlerUPP inHandler, ItemCount inNumTypes,
                             const EventTypeSpec* inList, void* inUserData, EventHandlerRef* outRef);
OSStatus RemoveEventHandler(EventHandlerRef inHandlerRef);
OSStatus RegisterEventHotKey(UInt32 inHotKeyCode, UInt32 inHotKeyModifiers, EventHotKeyID inHotKeyID,
                             EventTargetRef inTarget, OptionBits inOptions, EventHotKeyRef* outRef);
OSStatus UnregisterEventHotKey(EventHotKeyRef inHotKey);
}
