#include "SignIn/Keychain/KeychainStore.h"

#include <CoreFoundation/CoreFoundation.h>
#include <Security/Security.h>

#include <memory>

namespace {
struct Release {
    void operator()(const void* object) const {
        if (object != nullptr)
            CFRelease(object);
    }
};

template <typename T>
using Owned = std::unique_ptr<std::remove_pointer_t<T>, Release>;

Owned<CFMutableDictionaryRef> dictionary() {
    return Owned<CFMutableDictionaryRef>(CFDictionaryCreateMutable(nullptr, 0, &kCFTypeDictionaryKeyCallBacks,
                                                                   &kCFTypeDictionaryValueCallBacks));
}

/// Class, service and account: what every question names.
Owned<CFMutableDictionaryRef> query(const QString& service, const QString& account) {
    Owned<CFMutableDictionaryRef> item = dictionary();
    const Owned<CFStringRef> serviceName(service.toCFString());
    const Owned<CFStringRef> accountName(account.toCFString());
    CFDictionarySetValue(item.get(), kSecClass, kSecClassGenericPassword);
    CFDictionarySetValue(item.get(), kSecAttrService, serviceName.get());
    CFDictionarySetValue(item.get(), kSecAttrAccount, accountName.get());
    return item;
}
} // namespace

KeychainStore::Status KeychainStore::nativeSave(const QByteArray& data, const QString& service,
                                                const QString& account) {
    const Owned<CFMutableDictionaryRef> item = query(service, account);
    const Owned<CFDataRef> value(data.toCFData());
    const Owned<CFMutableDictionaryRef> change = dictionary();
    CFDictionarySetValue(change.get(), kSecValueData, value.get());
    CFDictionarySetValue(change.get(), kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock);
    // Changing the item keeps the old value where the new one cannot be stored; deleting it first would not.
    OSStatus status = SecItemUpdate(item.get(), change.get());
    if (status == errSecItemNotFound) {
        CFDictionarySetValue(item.get(), kSecValueData, value.get());
        CFDictionarySetValue(item.get(), kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock);
        status = SecItemAdd(item.get(), nullptr);
    }
    return {status == errSecSuccess ? Answer::done : Answer::refused, static_cast<int>(status)};
}

KeychainStore::Status KeychainStore::nativeLoad(QByteArray& data, const QString& service,
                                                const QString& account) {
    const Owned<CFMutableDictionaryRef> question = query(service, account);
    CFDictionarySetValue(question.get(), kSecReturnData, kCFBooleanTrue);
    CFDictionarySetValue(question.get(), kSecMatchLimit, kSecMatchLimitOne);
    CFTypeRef found = nullptr;
    const OSStatus status = SecItemCopyMatching(question.get(), &found);
    const Owned<CFTypeRef> owner(found);
    if (status != errSecSuccess || found == nullptr || CFGetTypeID(found) != CFDataGetTypeID())
        return {Answer::absent, static_cast<int>(status)};
    data = QByteArray::fromCFData(static_cast<CFDataRef>(found));
    return {Answer::done, 0};
}

KeychainStore::Status KeychainStore::nativeRemove(const QString& service, const QString& account) {
    const Owned<CFMutableDictionaryRef> item = query(service, account);
    const OSStatus status = SecItemDelete(item.get());
    if (status == errSecSuccess)
        return {Answer::done, 0};
    return {status == errSecItemNotFound ? Answer::absent : Answer::refused, static_cast<int>(status)};
}
