#include "Directory/Project.h"

QString rawValue(ProjectType type) {
    return type == ProjectType::ssh ? QStringLiteral("ssh") : QStringLiteral("harvellon");
}

QString Project::documentFolder() const {
    return type == ProjectType::ssh ? QStringLiteral("web") : QStringLiteral("public/fileadmin");
}
