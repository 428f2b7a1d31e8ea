#include "Mounting/Access/AccessLog.h"

#include <QStringList>

#include <algorithm>

namespace {
const QString accepted = QStringLiteral("Server accepts key:");
const QString offered = QStringLiteral("Offering public key:");

qsizetype lastOf(const QString& log, const QStringList& marks) {
    qsizetype last = -1;
    for (const QString& mark : marks)
        last = std::max(last, log.lastIndexOf(mark));
    return last;
}

/// Whether an accepted key has been followed by neither a refusal of its signature nor the login.
bool endsAtAcceptedKey(const QString& log, const QStringList& ends) {
    const qsizetype key = log.lastIndexOf(accepted);
    return key >= 0 && lastOf(log, ends) < key;
}

QString lastLine(const QString& log) {
    const QStringList lines = log.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const auto last = std::find_if(lines.crbegin(), lines.crend(), [](const QString& line) {
        return !line.startsWith(QLatin1String("debug"));
    });
    return last == lines.crend() ? QString() : last->trimmed();
}

AccessFinding refused(const QString& log) {
    const QString refusal = QStringLiteral("Authentications that can continue:");
    if (endsAtAcceptedKey(log, {refusal}) || log.contains(QLatin1String("signing failed")))
        return {AccessStep::keyLocked,
                QStringLiteral("Der Server kennt den Schlüssel, aber ssh kann ihn nicht benutzen. Vielleicht "
                               "hat er eine Passphrase und ist in keinem Agenten (ssh-add).")};
    const qsizetype keys = log.count(offered);
    if (keys == 0)
        return {AccessStep::noKey, QStringLiteral("ssh hat keinen Schlüssel, den es anbieten kann.")};
    if (log.contains(QLatin1String("Too many authentication failures")))
        return {
            AccessStep::keyRefused,
            QStringLiteral("Der Server hat nach %1 Schlüsseln abgebrochen, ohne einen zu kennen.").arg(keys)};
    return {AccessStep::keyRefused,
            keys == 1 ? QStringLiteral("Der Server kennt den angebotenen Schlüssel nicht.")
                      : QStringLiteral("Der Server kennt keinen der %1 angebotenen Schlüssel.").arg(keys)};
}

AccessFinding unreachable(const QString& line, const QString& domain) {
    QString sentence = QStringLiteral("%1 ist nicht erreichbar.").arg(domain);
    if (line.contains(QLatin1String("refused")))
        sentence = QStringLiteral("%1 nimmt auf dem Port für SSH keine Verbindung an.").arg(domain);
    else if (line.contains(QLatin1String("timed out")))
        sentence = QStringLiteral("%1 antwortet nicht.").arg(domain);
    return {AccessStep::unreachable, sentence};
}
} // namespace

AccessFinding readAccessLog(const QString& log, bool succeeded, const QString& domain) {
    if (succeeded)
        return {AccessStep::works,
                QStringLiteral("Der Zugang funktioniert. Verbinde das Projekt noch einmal.")};
    const auto tells = [&log](const char* sign) { return log.contains(QLatin1String(sign)); };
    const QString last = lastLine(log);
    if (tells("Could not resolve hostname"))
        return {AccessStep::nameUnknown,
                QStringLiteral("Der Name %1 lässt sich nicht auflösen.").arg(domain)};
    if (tells("REVOKED HOST KEY DETECTED") || tells(" revoked by file "))
        return {AccessStep::unclear,
                QStringLiteral("Der Schlüssel des Servers ist auf diesem Rechner gesperrt (revoked). "
                               "Vielleicht gibt sich jemand für den Server aus.")};
    if (tells("REMOTE HOST IDENTIFICATION HAS CHANGED"))
        return {AccessStep::hostKeyChanged,
                QStringLiteral("Der Server weist sich mit einem anderen Schlüssel aus als bisher.")};
    if (tells("Host key verification failed"))
        return {AccessStep::hostKeyUnknown,
                QStringLiteral("Der Schlüssel des Servers ist noch nicht bekannt.")};
    if (tells("Permission denied (") || tells("Too many authentication failures"))
        return refused(log);
    if (tells("Authenticated to"))
        return {AccessStep::noFiles,
                QStringLiteral("Die Anmeldung gelingt, aber der Server gibt keine Dateien heraus (SFTP).")};
    if (last.contains(QLatin1String("connect to host")) || last.contains(QLatin1String("timed out")))
        return unreachable(last, domain);
    return {AccessStep::unclear, QStringLiteral("Die Prüfung ist gescheitert: %1")
                                     .arg(last.isEmpty() ? QStringLiteral("ssh sagt nicht, warum.") : last)};
}

bool waitsForSignature(const QString& log) {
    return endsAtAcceptedKey(
        log, {QStringLiteral("Authentications that can continue:"), QStringLiteral("Authenticated to"),
              QStringLiteral("No more authentication methods"), QStringLiteral("signing failed")});
}
