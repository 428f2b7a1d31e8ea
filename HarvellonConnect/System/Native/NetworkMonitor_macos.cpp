#include "System/Native/NetworkMonitor.h"

#include "System/Logging.h"

#include <CoreFoundation/CoreFoundation.h>
#include <SystemConfiguration/SystemConfiguration.h>

#include <array>
#include <memory>

namespace {

struct Release {
    void operator()(const void* object) const { CFRelease(object); }
};

template <typename T>
using Owned = std::unique_ptr<std::remove_pointer_t<T>, Release>;

template <size_t count>
Owned<CFArrayRef> listOf(std::array<const void*, count> texts) {
    return Owned<CFArrayRef>(CFArrayCreate(nullptr, texts.data(), count, &kCFTypeArrayCallBacks));
}

/// The system's store of what the network is like at present. Its notifications come on the main run loop,
/// which Qt's event loop runs.
class StoreWatch : public QObject {
  public:
    explicit StoreWatch(std::function<void()> onChange) : m_onChange(std::move(onChange)) {
        SCDynamicStoreContext context{0, this, nullptr, nullptr, nullptr};
        m_store.reset(SCDynamicStoreCreate(nullptr, CFSTR("com.harvellon.HarvellonConnect"),
                                           &StoreWatch::storeChanged, &context));
        if (m_store && subscribe())
            m_source.reset(SCDynamicStoreCreateRunLoopSource(nullptr, m_store.get(), 0));
        if (m_source)
            CFRunLoopAddSource(CFRunLoopGetMain(), m_source.get(), kCFRunLoopCommonModes);
        else
            qCWarning(lcDesktop) << "network changes are not noticed:" << SCErrorString(SCError());
    }

    ~StoreWatch() override {
        if (m_source)
            CFRunLoopSourceInvalidate(m_source.get()); // no call with a `this` that is gone
    }
    Q_DISABLE_COPY_MOVE(StoreWatch)

  private:
    /// The global keys hold the primary interface and its router, the others each interface's addresses.
    bool subscribe() {
        const auto keys = listOf(std::array<const void*, 2>{CFSTR("State:/Network/Global/IPv4"),
                                                            CFSTR("State:/Network/Global/IPv6")});
        const auto patterns = listOf(std::array<const void*, 1>{CFSTR("State:/Network/Interface/.*/IPv4")});
        return keys && patterns &&
               SCDynamicStoreSetNotificationKeys(m_store.get(), keys.get(), patterns.get());
    }

    static void storeChanged(SCDynamicStoreRef /*store*/, CFArrayRef /*changedKeys*/, void* info) {
        static_cast<StoreWatch*>(info)->m_onChange();
    }

    std::function<void()> m_onChange;
    Owned<SCDynamicStoreRef> m_store;
    Owned<CFRunLoopSourceRef> m_source; ///< nothing when the store refuses
};

} // namespace

std::unique_ptr<QObject> NetworkMonitor::watch(std::function<void()> onChange) {
    return std::make_unique<StoreWatch>(std::move(onChange));
}
