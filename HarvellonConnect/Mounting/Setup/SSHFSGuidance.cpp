#include "Mounting/Setup/SSHFSGuidance.h"

#include "System/HostSystem.h"

#include <QStringList>

namespace {
using Action = GuidanceButton::Action;

const QString fuseAddress = QStringLiteral("https://www.fuse-t.org");
const GuidanceButton cancel{QStringLiteral("Abbrechen"), Action::none, {}, {}};
const GuidanceButton terminal{QStringLiteral("Terminal öffnen"), Action::openTerminal, {}, {}};

struct Packages {
    QLatin1StringView family; ///< as ID or ID_LIKE of /etc/os-release names it
    QLatin1StringView install;
    QLatin1StringView reinstall;
};

constexpr Packages knownPackages[] = {
    {QLatin1StringView("fedora"), QLatin1StringView("sudo dnf install fuse-sshfs"),
     QLatin1StringView("sudo dnf reinstall fuse-sshfs fuse3")},
    {QLatin1StringView("arch"), QLatin1StringView("sudo pacman -S sshfs"),
     QLatin1StringView("sudo pacman -S sshfs fuse3")},
    {QLatin1StringView("suse"), QLatin1StringView("sudo zypper install sshfs"),
     QLatin1StringView("sudo zypper install --force sshfs fuse3")},
    {QLatin1StringView("debian"), QLatin1StringView("sudo apt install sshfs"),
     QLatin1StringView("sudo apt install --reinstall sshfs fuse3")},
};

const Packages& packagesFor(const QString& osRelease) {
    // Split by hand: nothing else here needs the regular expression engine.
    QString words;
    for (const QString& line : osRelease.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("ID=")) || line.startsWith(QLatin1String("ID_LIKE=")))
            words += line.section(QLatin1Char('='), 1) + QLatin1Char(' ');
    }
    for (const Packages& packages : knownPackages) {
        if (words.contains(packages.family))
            return packages;
    }
    return knownPackages[std::size(knownPackages) - 1];
}

Guidance setupFuseT() {
    const QStringList lines{
        QStringLiteral(
            "Harvellon Connect mountet Projekte über sshfs (FUSE-T). Bitte einmalig installieren:"),
        QString(),
        QStringLiteral("  1. FUSE-T: ") + fuseAddress,
        QStringLiteral("  2. sshfs (von macos-fuse-t): im Homebrew-Tap oder als .pkg"),
        QString(),
        QStringLiteral("Danach App neu verbinden — sshfs wird automatisch erkannt.")};
    return {QStringLiteral("FUSE-T und sshfs werden benötigt"),
            lines.join(QLatin1Char('\n')),
            {{QStringLiteral("fuse-t.org öffnen"), Action::openAddress, fuseAddress, {}}, cancel}};
}

Guidance repairFuseT() {
    const QString commands = QStringLiteral("sudo rm -f /usr/local/bin/sshfs\n"
                                            "brew tap macos-fuse-t/cask\n"
                                            "brew install --cask macos-fuse-t/cask/fuse-t-sshfs");
    const QString explanation = QStringLiteral("sshfs wurde gefunden, startet aber nicht — das passiert wenn "
                                               "FUSE-T und macFUSE nebeneinander installiert "
                                               "wurden (Code-Signaturen der Libraries passen nicht "
                                               "zusammen).\n\nReparatur in einem Terminal-Fenster:\n\n");
    const QString closing = QStringLiteral(
        "\n\nNach dem Ausführen das Terminal-Command `sshfs --version` verifiziert's — muss sauber "
        "„SSHFS version …\" ausgeben. Dann App neu verbinden.");
    return {QStringLiteral("sshfs-Installation ist defekt"),
            explanation + commands + closing,
            {{QStringLiteral("Befehle kopieren"), Action::copy, commands,
              QStringLiteral(
                  "Reparatur-Befehle in die Zwischenablage kopiert. Im Terminal einfügen und ausführen.")},
             terminal,
             cancel}};
}

Guidance setupPackages(const QString& osRelease) {
    const QString command = packagesFor(osRelease).install;
    return {QStringLiteral("sshfs wird benötigt"),
            QStringLiteral("Harvellon Connect mountet Projekte über sshfs. Bitte einmalig in einem Terminal "
                           "installieren:\n\n  %1\n\nDanach neu verbinden — sshfs wird automatisch erkannt.")
                .arg(command),
            {{QStringLiteral("Befehl kopieren"), Action::copy, command,
              QStringLiteral("Befehl in die Zwischenablage kopiert. Im Terminal einfügen und ausführen.")},
             terminal,
             cancel}};
}

Guidance repairPackages(const QString& osRelease) {
    const QString command = packagesFor(osRelease).reinstall;
    return {QStringLiteral("sshfs-Installation ist defekt"),
            QStringLiteral(
                "sshfs wurde gefunden, startet aber nicht. Meist hilft es, die Pakete in einem Terminal neu "
                "zu installieren:\n\n  %1\n\nDanach muss `sshfs --version` sauber „SSHFS version …\" "
                "ausgeben. Dann neu verbinden.")
                .arg(command),
            {{QStringLiteral("Befehle kopieren"), Action::copy, command,
              QStringLiteral(
                  "Reparatur-Befehle in die Zwischenablage kopiert. Im Terminal einfügen und ausführen.")},
             terminal,
             cancel}};
}
} // namespace

Guidance setupGuidance(const HostSystem& host) {
    return host.sshfsSource == SSHFSSource::fuseT ? setupFuseT() : setupPackages(host.osRelease);
}

Guidance repairGuidance(const HostSystem& host) {
    return host.sshfsSource == SSHFSSource::fuseT ? repairFuseT() : repairPackages(host.osRelease);
}
