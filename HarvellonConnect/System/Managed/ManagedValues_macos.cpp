#include "System/Managed/ManagedValues.h"

#include "System/Logging.h"

#include <CoreFoundation/CoreFoundation.h>

#include <memory>

namespace {
struct Release {
    void operator()(const void* object) const { CFRelease(object); }
};

template <typename T>
using Owned = std::unique_ptr<std::remove_pointer_t<T>, Release>;

/// Booleans and texts; other types yield a text that nothing accepts.
QVariant valueOf(CFTypeRef value) {
    if (CFGetTypeID(value) == CFBooleanGetTypeID())
        return CFBooleanGetValue(static_cast<CFBooleanRef>(value)) != 0;
    if (CFGetTypeID(value) == CFStringGetTypeID())
        return QString::fromCFString(static_cast<CFStringRef>(value));
    return QStringLiteral("?");
}
} // namespace

ManagedValues ManagedValues::read(const QStringList& keys) {
    ManagedValues found;
    // By name: while tests run, the current application is another one.
    const Owned<CFStringRef> application(QString(applicationIdentifier).toCFString());
    for (const QString& key : keys) {
        const Owned<CFStringRef> name(key.toCFString());
        if (!CFPreferencesAppValueIsForced(name.get(), application.get()))
            continue;
        const Owned<CFTypeRef> value(CFPreferencesCopyAppValue(name.get(), application.get()));
        if (value)
            found.values.insert(key, valueOf(value.get()));
    }
    return found;
}
