#pragma once

#include "Directory/Project.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// The signed-in person as the directory reports them.
struct UserProfile {
    QString name;
    std::optional<QString> reseller;
    std::optional<bool> coder;
    std::optional<bool> allowDatabaseConnect;

    bool operator==(const UserProfile&) const = default;
};

/// The directory's answer.
struct ApplicationsResponse {
    UserProfile user;
    QList<Project> projects;

    bool operator==(const ApplicationsResponse&) const = default;

    /// Reads the server's JSON. Throws DecodingError. Callable from any thread; 10,000 projects take a few
    /// milliseconds.
    static ApplicationsResponse decode(const QByteArray& json);
};
