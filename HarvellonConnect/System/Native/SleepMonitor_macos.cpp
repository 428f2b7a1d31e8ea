#include "System/Native/SleepMonitor.h"

#include <QList>

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/IOMessage.h>
#include <IOKit/pwr_mgt/IOPMLib.h>

#include <utility>

struct SleepMonitor::Native {
    explicit Native(SleepMonitor& owner) : monitor(owner) {
        rootPort = IORegisterForSystemPower(this, &port, &Native::powerChanges, &notifier);
        if (rootPort != MACH_PORT_NULL)
            CFRunLoopAddSource(CFRunLoopGetMain(), IONotificationPortGetRunLoopSource(port),
                               kCFRunLoopCommonModes);
    }

    ~Native() {
        if (rootPort == MACH_PORT_NULL)
            return;
        allow();
        CFRunLoopRemoveSource(CFRunLoopGetMain(), IONotificationPortGetRunLoopSource(port),
                              kCFRunLoopCommonModes);
        IODeregisterForSystemPower(&notifier);
        IOServiceClose(rootPort);
        IONotificationPortDestroy(port);
    }
    Q_DISABLE_COPY_MOVE(Native)

    /// The system waits half a minute for whoever does not answer, so every announcement is answered once.
    void allow() {
        for (const intptr_t announcement : std::exchange(unanswered, {}))
            IOAllowPowerChange(rootPort, announcement);
    }

    static void powerChanges(void* context, io_service_t /*service*/, uint32_t message, void* argument) {
        auto* native = static_cast<Native*>(context);
        switch (message) {
        case kIOMessageCanSystemSleep: // a question before idle sleep, which may still be called off
            IOAllowPowerChange(native->rootPort, reinterpret_cast<intptr_t>(argument));
            return;
        case kIOMessageSystemWillSleep:
            native->unanswered.append(reinterpret_cast<intptr_t>(argument));
            native->monitor.prepareForSleep();
            return;
        case kIOMessageSystemHasPoweredOn:
            native->unanswered.clear(); // too late: the system has slept without them
            native->monitor.wakeUp();
            return;
        default:
            return;
        }
    }

    SleepMonitor& monitor;
    io_connect_t rootPort = MACH_PORT_NULL;
    IONotificationPortRef port = nullptr;
    io_object_t notifier = MACH_PORT_NULL;
    QList<intptr_t> unanswered; ///< announced sleeps that wait for our answer
};

SleepMonitor::SleepMonitor(QObject* parent, std::chrono::milliseconds limit)
    : QObject(parent), m_native(std::make_unique<Native>(*this)) {
    setLimit(limit);
}

SleepMonitor::~SleepMonitor() = default;

void SleepMonitor::letSystemSleep() {
    m_native->allow();
}
