#include "Actions/Rules/SiteAddresses.h"

#include <QUrl>

namespace {
const QString scheme = QStringLiteral("https://");
}

QString siteAddress(const Project& project, bool backEnd) {
    return scheme + project.domain + (backEnd ? QStringLiteral("/admin") : QString());
}

QString shellAddress(const Project& project) {
    return QStringLiteral("ssh://") + project.sshLogin();
}

std::optional<QStringList> shellArguments(const Project& project) {
    const QUrl url(shellAddress(project), QUrl::StrictMode);
    if (!url.isValid() || url.host().compare(project.domain, Qt::CaseInsensitive) != 0)
        return std::nullopt;
    return QStringList{project.sshLogin()};
}

QString cacheAddress(const Project& project) {
    return scheme + project.domain + QStringLiteral("/?type=5820917364");
}
