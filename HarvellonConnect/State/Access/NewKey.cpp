#include "State/Access/NewKey.h"

#include "Actions/Openers.h"
#include "System/AtomicFile.h"
#include "System/Reporter.h"
#include "System/Shell.h"

namespace {
/// ssh-keygen would replace a file that appears while it asks for the passphrase; a hard link replaces none.
constexpr char script[] = R"sh(umask 077
mkdir -p "$(dirname "$1")"
new=$(mktemp -d "$1.neu.XXXXXX") || exit 1
trap 'rm -rf "$new"' EXIT
trap 'exit 1' HUP INT TERM
echo "Neuer SSH-Schlüssel: $1"
if /usr/bin/ssh-keygen -q -t ed25519 -f "$new/key" && ln "$new/key.pub" "$1.pub"; then
    if ln "$new/key" "$1"; then
        echo "Angelegt. Der öffentliche Teil ist $1.pub."
    else
        rm "$1.pub"
    fi
else
    echo "Es wurde kein Schlüssel angelegt."
fi
echo "Weiter mit der Eingabetaste."
read -r _
)sh";

QString shellWord(QString text) {
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QStringLiteral("'\\''")) + QLatin1Char('\'');
}
} // namespace

void makeKeyInTerminal(const ActionContext& context, const QString& place) {
    const HostSystem& host = context.host;
    if (host.terminal.executable.isEmpty()) {
        openTerminal(context, {QStringLiteral("/bin/sh"), QStringLiteral("-c"), QString::fromUtf8(script),
                               QStringLiteral("sh"), place});
        return;
    }
    // This desktop's terminal takes no command, but runs files of this kind.
    const QString file = host.privateFolder + QStringLiteral("/schluessel-anlegen.command");
    const QString text =
        QStringLiteral("#!/bin/sh\nset -- %1\n").arg(shellWord(place)) + QString::fromUtf8(script);
    constexpr QFile::Permissions program = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    if (!writeAtomically(file, text.toUtf8(), program)) {
        context.report.log(QStringLiteral("%1 konnte nicht geschrieben werden.").arg(file),
                           ActivityLogLevel::warning);
        return;
    }
    try {
        context.shell.launch(host.terminal.executable, host.terminal.argumentsFor(file));
    } catch (const ShellError&) {
        // The user sees that nothing opens.
    }
}
