#pragma once

#include "Directory/Project.h"

#include <QString>
#include <QStringList>

#include <optional>

/// What a site's configuration says about its database.
struct DatabaseCredentials {
    QString database;
    QString user;
    QString password;
};

/// Where the configuration lies, seen from the login's home folder.
QString configurationFile(ProjectType type);

/// Nothing when one of the three is missing. Callable from any thread: files may be large.
std::optional<DatabaseCredentials> credentialsIn(const QString& configuration, ProjectType type);

/// The first value of `key` in dotenv text.
std::optional<QString> dotenvValue(const QString& text, const QString& key);

/// What reads the configuration on the server.
QStringList configurationCommand(const Project& project);

/// The arguments for ssh that read the configuration over a connection of its own.
QStringList configurationArguments(const Project& project);

/// The address that the database client opens: through ssh to the host's own loopback. `homeFolder` holds the
/// user's key.
QString databaseAddress(const Project& project, const DatabaseCredentials& credentials,
                        const QString& homeFolder);

/// The address that any client opens: through `port` of this machine.
QString tunnelledAddress(const DatabaseCredentials& credentials, quint16 port);
