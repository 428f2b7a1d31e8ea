#include "SignIn/OAuthError.h"

QString OAuthError::description() const {
    switch (m_case) {
    case Case::listenerFailed:
        return QStringLiteral("Callback-Server fehlgeschlagen: ") + m_text;
    case Case::tokenExchangeFailed:
        return QStringLiteral("Token-Austausch fehlgeschlagen: ") + m_text;
    case Case::refreshFailed:
        return QStringLiteral("Token-Erneuerung fehlgeschlagen: ") + m_text;
    case Case::alreadyAuthenticating:
        return QStringLiteral("Login laeuft bereits.");
    case Case::stateMismatch:
        return QStringLiteral("Sicherheitspruefung fehlgeschlagen (State stimmt nicht ueberein).");
    case Case::noCodeReceived:
        return QStringLiteral("Kein Authorization Code vom Server erhalten.");
    case Case::timeout:
        return QStringLiteral("Login-Timeout: Keine Antwort vom Browser erhalten.");
    }
    Q_UNREACHABLE();
}
