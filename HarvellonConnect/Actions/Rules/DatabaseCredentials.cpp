#include "Actions/Rules/DatabaseCredentials.h"

#include <QRegularExpression>
#include <QUrl>

namespace {
bool isBlank(QChar character) {
    return character == QLatin1Char(' ') || character == QLatin1Char('\t');
}

/// Without blanks at its ends; line breaks stay.
QStringView trimmed(QStringView text) {
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

bool isLineBreak(QChar character) {
    const char16_t unit = character.unicode();
    constexpr char16_t lineFeed = 0x0a;
    constexpr char16_t carriageReturn = 0x0d; // and the two between
    constexpr char16_t nextLine = 0x85;
    constexpr char16_t lineSeparator = 0x2028;
    constexpr char16_t paragraphSeparator = 0x2029;
    return (unit >= lineFeed && unit <= carriageReturn) || unit == nextLine || unit == lineSeparator ||
           unit == paragraphSeparator;
}

QString unquoted(QStringView value) {
    const bool doubled = value.startsWith(QLatin1Char('"'));
    const bool single = value.startsWith(QLatin1Char('\''));
    if (!doubled && !single && value.contains(QLatin1Char('#')))
        value = trimmed(value.first(value.indexOf(QLatin1Char('#'))));
    if (value.size() > 1 && (doubled || single) && value.back() == value.front())
        value = value.sliced(1).chopped(1);
    return value.toString();
}

std::optional<QString> settingsValue(const QString& text, const char* key) {
    const QRegularExpression pattern(QStringLiteral("'%1'\\s*=>\\s*'([^']*)'").arg(QLatin1String(key)));
    const QRegularExpressionMatch match = pattern.match(text);
    return match.hasMatch() ? std::optional(match.captured(1)) : std::nullopt;
}
} // namespace

QString configurationFile(ProjectType type) {
    return type == ProjectType::ssh ? QStringLiteral("web/.env")
                                    : QStringLiteral("../../web/config/system/settings.php");
}

std::optional<QString> dotenvValue(const QString& text, const QString& key) {
    const QStringView all(text);
    for (qsizetype start = 0; start < all.size();) {
        qsizetype end = start;
        while (end < all.size() && !isLineBreak(all.at(end)))
            ++end;
        const QStringView line = trimmed(all.sliced(start, end - start));
        start = end + 1;
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (line.startsWith(QLatin1Char('#')) || equals < 0 || trimmed(line.first(equals)) != key)
            continue;
        return unquoted(trimmed(line.sliced(equals + 1)));
    }
    return std::nullopt;
}

std::optional<DatabaseCredentials> credentialsIn(const QString& configuration, ProjectType type) {
    const auto value = [&](const char* dotenvKey, const char* settingsKey) {
        return type == ProjectType::ssh ? dotenvValue(configuration, QLatin1String(dotenvKey))
                                        : settingsValue(configuration, settingsKey);
    };
    const std::optional<QString> database = value("DB_DATABASE", "dbname");
    const std::optional<QString> user = database ? value("DB_USERNAME", "user") : std::nullopt;
    const std::optional<QString> password = user ? value("DB_PASSWORD", "password") : std::nullopt;
    if (!password)
        return std::nullopt;
    return DatabaseCredentials{*database, *user, *password};
}

QStringList configurationCommand(const Project& project) {
    return {QStringLiteral("cat"), configurationFile(project.type)};
}

QStringList configurationArguments(const Project& project) {
    return QStringList{QStringLiteral("-o"), QStringLiteral("StrictHostKeyChecking=no"),
                       QStringLiteral("-o"), QStringLiteral("UserKnownHostsFile=/dev/null"),
                       QStringLiteral("-o"), QStringLiteral("ConnectTimeout=10"),
                       project.sshLogin()} +
           configurationCommand(project);
}

QString databaseAddress(const Project& project, const DatabaseCredentials& credentials,
                        const QString& homeFolder) {
    const QByteArray allowedInQuery = "!$&'()*+,;=:@/?";
    const QString key = QString::fromLatin1(
        QUrl::toPercentEncoding(homeFolder + QStringLiteral("/.ssh/id_rsa"), allowedInQuery));
    // The client takes user and password as they are: encoding them would change them.
    return QStringLiteral("mysql://") + credentials.user + QLatin1Char(':') + credentials.password +
           QStringLiteral("@127.0.0.1:3306/") + credentials.database + QStringLiteral("?ssh_host=") +
           project.domain + QStringLiteral("&ssh_port=22&ssh_user=") + project.sshUser() +
           QStringLiteral("&ssh_keyLocation=") + key + QStringLiteral("&ssh_keyLocationEnabled=1");
}

QString tunnelledAddress(const DatabaseCredentials& credentials, quint16 port) {
    const auto encoded = [](const QString& text) {
        return QString::fromLatin1(QUrl::toPercentEncoding(text));
    };
    return QStringLiteral("mysql://%1:%2@127.0.0.1:%3/%4")
        .arg(encoded(credentials.user), encoded(credentials.password), QString::number(port),
             encoded(credentials.database));
}
