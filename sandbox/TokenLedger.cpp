#include "sandbox/TokenLedger.h"

#include "sandbox/PrivateFile.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QRandomGenerator>

namespace sandbox {

namespace {
constexpr std::chrono::minutes codeLifetime{1};

QString randomToken() {
    QByteArray bytes(24, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = static_cast<char>(QRandomGenerator::system()->bounded(256));
    return QString::fromLatin1(bytes.toBase64(QByteArray::Base64UrlEncoding));
}

QString challengeOf(const QString& verifier) {
    const QByteArray hash = QCryptographicHash::hash(verifier.toUtf8(), QCryptographicHash::Sha256);
    return QString::fromLatin1(hash.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

void removeOfGrant(QJsonObject& tokens, const QString& grant) {
    for (auto token = tokens.begin(); token != tokens.end();)
        token = token.value().toString() == grant ? tokens.erase(token) : std::next(token);
}
} // namespace

TokenLedger::TokenLedger(QString file) : m_file(std::move(file)) {
    const QJsonObject state = QJsonDocument::fromJson(contentOf(m_file)).object();
    m_access = state.value(QStringLiteral("access")).toObject();
    m_refresh = state.value(QStringLiteral("refresh")).toObject();
    m_used = state.value(QStringLiteral("used")).toObject();
    m_grants = state.value(QStringLiteral("grants")).toObject();
}

QString TokenLedger::issueCode(const QString& identity, const QString& redirectURI,
                               const QString& challenge) {
    const std::lock_guard lock(m_mutex);
    const QString code = randomToken();
    m_codes.insert(code, {identity, redirectURI, challenge, std::chrono::steady_clock::now()});
    return code;
}

std::optional<IssuedTokens> TokenLedger::redeemCode(const QString& code, const QString& redirectURI,
                                                    const QString& verifier) {
    const std::lock_guard lock(m_mutex);
    const auto found = m_codes.constFind(code);
    if (found == m_codes.constEnd())
        return std::nullopt;
    const Code issued = *found;
    m_codes.erase(found);
    const bool fresh = std::chrono::steady_clock::now() - issued.issued < codeLifetime;
    if (!fresh || issued.redirectURI != redirectURI || issued.challenge != challengeOf(verifier))
        return std::nullopt;
    return grantLocked(issued.identity);
}

IssuedTokens TokenLedger::grant(const QString& identity) {
    const std::lock_guard lock(m_mutex);
    return grantLocked(identity);
}

IssuedTokens TokenLedger::grantLocked(const QString& identity) {
    const QString grant = randomToken();
    m_grants.insert(grant, identity);
    return issue(grant, identity);
}

std::optional<IssuedTokens> TokenLedger::refresh(const QString& refreshToken) {
    const std::lock_guard lock(m_mutex);
    if (m_used.contains(refreshToken)) {
        const QString grant = m_used.value(refreshToken).toString();
        removeOfGrant(m_access, grant);
        removeOfGrant(m_refresh, grant);
        m_grants.remove(grant);
        save();
        return std::nullopt;
    }
    if (!m_refresh.contains(refreshToken))
        return std::nullopt;
    const QString grant = m_refresh.take(refreshToken).toString();
    m_used.insert(refreshToken, grant);
    removeOfGrant(m_access, grant);
    return issue(grant, m_grants.value(grant).toString());
}

IssuedTokens TokenLedger::issue(const QString& grant, const QString& identity) {
    IssuedTokens tokens{randomToken(), randomToken(), identity};
    m_access.insert(tokens.accessToken, grant);
    m_refresh.insert(tokens.refreshToken, grant);
    save();
    return tokens;
}

std::optional<QString> TokenLedger::identityFor(const QString& accessToken) {
    const std::lock_guard lock(m_mutex);
    if (!m_access.contains(accessToken))
        return std::nullopt;
    return m_grants.value(m_access.value(accessToken).toString()).toString();
}

void TokenLedger::expireAccessTokens() {
    const std::lock_guard lock(m_mutex);
    m_access = {};
    save();
}

void TokenLedger::revokeAll() {
    const std::lock_guard lock(m_mutex);
    m_access = {};
    m_refresh = {};
    m_used = {};
    m_grants = {};
    save();
}

void TokenLedger::save() const {
    const QJsonObject state{{QStringLiteral("access"), m_access},
                            {QStringLiteral("refresh"), m_refresh},
                            {QStringLiteral("used"), m_used},
                            {QStringLiteral("grants"), m_grants}};
    writePrivateFile(m_file, QJsonDocument(state).toJson(QJsonDocument::Compact));
}

} // namespace sandbox
