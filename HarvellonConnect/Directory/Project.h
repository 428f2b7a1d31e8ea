#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// The kind of a project. Unknown kinds count as the platform's own.
enum class ProjectType { harvellon, ssh };

[[nodiscard]] QString rawValue(ProjectType type);

/// One hosted web space. Its identity is `domain`; two values are equal when all fields are.
struct Project {
    QString domain;
    std::optional<QString> name;
    QString webspaceID; ///< decimal digits, with the server's own precision
    QString path;       ///< always begins with "/"
    ProjectType type = ProjectType::harvellon;

    /// What a person calls it: the name, else the domain.
    [[nodiscard]] QString title() const { return name.value_or(domain); }

    [[nodiscard]] QString sshUser() const { return QStringLiteral("ssh") + webspaceID; }

    /// What ssh is told to connect to.
    [[nodiscard]] QString sshLogin() const { return sshUser() + QLatin1Char('@') + domain; }

    /// The folder inside the project's tree that holds what people edit.
    [[nodiscard]] QString documentFolder() const;

    bool operator==(const Project&) const = default;
};
