#include "System/Managed/ManagedSettings.h"

#include "System/Logging.h"
#include "System/Network/ServerAddress.h"

#include <algorithm>

namespace {
const QString ownCommand = QStringLiteral("own");

/// A truth value, also as an INI file writes it.
QVariant truth(const QVariant& value) {
    const QString text = value.toString();
    return text == QLatin1String("true") || text == QLatin1String("false")
               ? QVariant(text == QLatin1String("true"))
               : QVariant();
}

/// The key of one of `programs`; empty for the one that is used where nothing is chosen, which `usual` names.
QVariant program(const QString& key, const QList<KnownProgram>& programs, const QString& usual,
                 const QVariant& command) {
    if (key == usual)
        return QString();
    const bool isKnown = std::any_of(programs.begin(), programs.end(),
                                     [&](const KnownProgram& known) { return known.key == key; });
    return isKnown || (key == ownCommand && !command.toString().isEmpty()) ? QVariant(key) : QVariant();
}

/// What `value` means; invalid where it cannot be used.
QVariant usable(const QString& key, const QVariant& value, const QVariantMap& all, const HostSystem& host) {
    const QString text = value.toString(); // empty for a list
    if (key == SettingKey::server) {
        const ServerAddress server = ServerAddress::checked(text);
        return server.problem.isEmpty() ? QVariant(server.address) : QVariant();
    }
    if (key == SettingKey::updates || key == SettingKey::hotkey || key == SettingKey::startsAtLogin)
        return truth(value);
    if (key == SettingKey::editor)
        return program(text, host.editors, QStringLiteral("vscode"), all.value(SettingKey::editorCommand));
    if (key == SettingKey::terminal)
        return program(text, host.terminals, QStringLiteral("system"),
                       all.value(SettingKey::terminalCommand));
    if (key == SettingKey::editorCommand || key == SettingKey::terminalCommand) {
        const QString user = key == SettingKey::editorCommand ? SettingKey::editor : SettingKey::terminal;
        return all.value(user) == ownCommand && !text.isEmpty() ? QVariant(text) : QVariant();
    }
    return {};
}
} // namespace

ManagedSettings ManagedSettings::read(const HostSystem& host) {
    const ManagedSettings settings =
        checked(ManagedValues::read({SettingKey::server, SettingKey::updates, SettingKey::hotkey,
                                     SettingKey::startsAtLogin, SettingKey::editor, SettingKey::editorCommand,
                                     SettingKey::terminal, SettingKey::terminalCommand}),
                host);
    for (const QString& problem : settings.problems)
        qCWarning(lcPreferences).noquote() << problem;
    return settings;
}

ManagedSettings ManagedSettings::checked(const ManagedValues& found, const HostSystem& host) {
    ManagedSettings settings{{}, found.problems};
    for (auto each = found.values.begin(); each != found.values.end(); ++each) {
        const QVariant value = usable(each.key(), *each, found.values, host);
        if (value.isValid())
            settings.values.insert(each.key(), value);
        else if (each.key() == SettingKey::server)
            settings.problems.append(ServerAddress::checked(each->toString()).problem);
        else // without the value, which may be anything
            settings.problems.append(
                QStringLiteral("Vorgabe der Verwaltung wird nicht verwendet: %1").arg(each.key()));
    }
    return settings;
}
