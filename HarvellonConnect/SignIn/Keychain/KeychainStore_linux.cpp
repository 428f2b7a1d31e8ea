#include "SignIn/Keychain/KeychainStore.h"

#include <libsecret/secret.h>

namespace {
const SecretSchema* schema() {
    static const SecretSchema tokens = {
        "com.harvellon.HarvellonConnect.Token",
        SECRET_SCHEMA_NONE,
        {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING}, {"account", SECRET_SCHEMA_ATTRIBUTE_STRING}, {}},
        0,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr};
    return &tokens;
}

/// What items are sought by. Not by the schema's name: a gnome-keyring that has been locked since its start
/// finds no item by it, so that it would not ask for its password, and the login would be lost.
const SecretSchema* anyName() {
    static const SecretSchema sought = [] {
        SecretSchema tokens = *schema();
        tokens.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
        return tokens;
    }();
    return &sought;
}

/// Frees the error. Distinguishes a refusal by the keyring (locked, dismissed) from an absent keyring.
int codeOf(GError* error, bool& unavailable) {
    const int code = error->code;
    unavailable = error->domain != SECRET_ERROR &&
                  !(error->domain == G_IO_ERROR && error->code == G_IO_ERROR_CANCELLED);
    g_error_free(error);
    return code;
}

/// Whether the keyring has the item, be it locked. Asks for no password.
bool exists(const QString& service, const QString& account) {
    GList* items = secret_password_search_sync(anyName(), SECRET_SEARCH_NONE, nullptr, nullptr, "service",
                                               service.toUtf8().constData(), "account",
                                               account.toUtf8().constData(), nullptr);
    const bool found = items != nullptr;
    g_list_free_full(items, g_object_unref);
    return found;
}

/// A keyring that was started anew does not know the session that the library still holds: where none
/// answers, the second try begins another one.
template <typename Ask>
auto askTwice(Ask ask) {
    auto status = ask();
    if (status.answer == decltype(status.answer)::unavailable) {
        secret_service_disconnect();
        status = ask();
    }
    return status;
}
} // namespace

KeychainStore::Status KeychainStore::nativeSave(const QByteArray& data, const QString& service,
                                                const QString& account) {
    return askTwice([&]() -> Status {
        GError* error = nullptr;
        SecretValue* value = secret_value_new(data.constData(), data.size(), "text/plain");
        const QByteArray label = QStringLiteral("Harvellon Connect (%1)").arg(account).toUtf8();
        const gboolean stored = secret_password_store_binary_sync(
            schema(), SECRET_COLLECTION_DEFAULT, label.constData(), value, nullptr, &error, "service",
            service.toUtf8().constData(), "account", account.toUtf8().constData(), nullptr);
        secret_value_unref(value);
        if (error != nullptr) {
            bool unavailable = false;
            const int code = codeOf(error, unavailable);
            return {unavailable ? Answer::unavailable : Answer::refused, code};
        }
        return {stored == TRUE ? Answer::done : Answer::refused, 0};
    });
}

KeychainStore::Status KeychainStore::nativeLoad(QByteArray& data, const QString& service,
                                                const QString& account) {
    return askTwice([&]() -> Status {
        GError* error = nullptr;
        SecretValue* value = secret_password_lookup_binary_sync(anyName(), nullptr, &error, "service",
                                                                service.toUtf8().constData(), "account",
                                                                account.toUtf8().constData(), nullptr);
        if (error != nullptr) {
            bool unavailable = false;
            const int code = codeOf(error, unavailable);
            return {unavailable ? Answer::unavailable : Answer::refused, code};
        }
        if (value == nullptr) // absent or locked
            return {exists(service, account) ? Answer::refused : Answer::absent, 0};
        gsize length = 0;
        const gchar* bytes = secret_value_get(value, &length);
        data = QByteArray(bytes, static_cast<qsizetype>(length));
        secret_value_unref(value);
        return {Answer::done, 0};
    });
}

KeychainStore::Status KeychainStore::nativeRemove(const QString& service, const QString& account) {
    return askTwice([&]() -> Status {
        GError* error = nullptr;
        const gboolean removed =
            secret_password_clear_sync(anyName(), nullptr, &error, "service", service.toUtf8().constData(),
                                       "account", account.toUtf8().constData(), nullptr);
        if (error != nullptr) {
            bool unavailable = false;
            const int code = codeOf(error, unavailable);
            return {unavailable ? Answer::unavailable : Answer::refused, code};
        }
        if (removed == TRUE)
            return {Answer::done, 0};
        return {exists(service, account) ? Answer::refused : Answer::absent, 0}; // a locked one stays
    });
}
