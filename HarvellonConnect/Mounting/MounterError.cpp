#include "Mounting/MounterError.h"

MounterError MounterError::fromSSHFS(const QString& errors, const QString& server) {
    for (const char* sign : {"permission denied", "publickey", "authentication failed"}) {
        if (errors.contains(QLatin1String(sign), Qt::CaseInsensitive))
            return MounterError(Case::authenticationFailed, server);
    }
    return MounterError(Case::mountFailed,
                        errors.isEmpty() ? QStringLiteral("sshfs beendet ohne Mount") : errors);
}

QString MounterError::description() const {
    switch (m_case) {
    case Case::mountPointOccupied:
        return QStringLiteral("Mount-Pfad %1 ist bereits belegt und konnte nicht freigegeben werden.")
            .arg(m_text);
    case Case::mountFailed:
        return QStringLiteral("Mount fehlgeschlagen: ") + m_text;
    case Case::authenticationFailed:
        return QStringLiteral(
                   "SSH-Zugang zu %1 funktioniert nicht.\n\nTeste im Terminal: ssh <user>@%1 — wenn das "
                   "nach Passwort fragt oder „Permission denied\" sagt, fehlt der Public-Key auf dem "
                   "Server. In diesem Fall den gewünschten Public-Key (z.B. ~/.ssh/id_ed25519.pub) einmalig "
                   "im Harvellon-Backend bei deinem Account hinterlegen.")
            .arg(m_text);
    case Case::unmountFailed:
        return QStringLiteral("Unmount fehlgeschlagen: ") + m_text;
    case Case::sshfsNotFound:
        return QStringLiteral("sshfs ist nicht installiert. Bitte FUSE-T und sshfs einrichten.");
    case Case::mountTimeout:
        return QStringLiteral("Mount-Vorgang hat den Timeout überschritten (15 s).");
    }
    Q_UNREACHABLE();
}
