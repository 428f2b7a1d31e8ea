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

/// Class, service and account: what every question names.
Owned<CFMutableDictionaryRef> query(const QString& service, const QString& account) {
    Owned<CFMutableDictionaryRef> dictionary(CFDictionaryCreateMutable(
        nullptr, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    const Owned<CFStringRef> serviceName(service.toCFString());
    const Owned<CFStringRef> accountName(account.toCFString());
    CFDictionarySetValue(dictionary.get(), kSecClass, kSecClassGenericPassword);
    CFDictionarySetValue(dictionary.get(), kSecAttrService, serviceName.get());
    CFDictionarySetValue(dictionary.get(), kSecAttrAccount, accountName.get());
    return dictionary;
}
} // namespace

KeychainStore::Status KeychainStore::nativeSave(const QByteArray& data, const QString& service,
                                                const QString& account) {
    const Owned<CFMutableDictionaryRef> item = query(service, account);
    SecItemDelete(item.get());
    const Owned<CFDataRef> value(data.toCFData());
    CFDictionarySetValue(item.get(), kSecValueData, value.get());
    CFDictionarySetValue(item.get(), kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock);
    const OSStatus status = SecItemAdd(item.get(), nullptr);
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
