#include "State/Access/NewKey.h"

#include "Actions/Openers.h"
#include "System/Reporter.h"

namespace {
/// ssh-keygen would replace a file that appears while it asks for the passphrase; a hard link replaces none.
constexpr char newKey[] = R"sh(umask 077
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

constexpr char publicHalf[] = R"sh(half=$(mktemp "$1.pub.neu.XXXXXX") || exit 1
trap 'rm -f "$half"' EXIT
trap 'exit 1' HUP INT TERM
echo "Öffentlicher Teil von $1"
if /usr/bin/ssh-keygen -y -f "$1" >"$half" && ln "$half" "$1.pub"; then
    echo "Angelegt: $1.pub."
else
    echo "Es wurde nichts angelegt."
fi
echo "Weiter mit der Eingabetaste."
read -r _
)sh";
} // namespace

QString keyOffer(const OwnKey& own) {
    if (own.key)
        return {};
    if (!own.unreadable.isEmpty())
        return QStringLiteral("Öffentlichen Teil anlegen");
    return own.place.isEmpty() ? QString() : QStringLiteral("Schlüssel anlegen");
}

void makeKeyInTerminal(const ActionContext& context, const OwnKey& own) {
    if (keyOffer(own).isEmpty())
        return;
    const bool half = !own.unreadable.isEmpty();
    openTerminal(context, {QStringLiteral("/bin/sh"), QStringLiteral("-c"),
                           QString::fromUtf8(half ? publicHalf : newKey), QStringLiteral("sh"),
                           half ? own.unreadable : own.place});
}

void copyPublicKey(const ActionContext& context, const PublicKey& key) {
    context.copyText(key.line);
    context.report.log(
        QStringLiteral(
            "Öffentlichen Schlüssel in die Zwischenablage kopiert. Im Harvellon-Backend einfügen."),
        ActivityLogLevel::info);
}
