#include "Actions/Rules/SiteAddresses.h"

namespace {
const QString scheme = QStringLiteral("https://");
}

QString siteAddress(const Project& project, bool backEnd) {
    return scheme + project.domain + (backEnd ? QStringLiteral("/admin") : QString());
}

QString shellAddress(const Project& project) {
    return QStringLiteral("ssh://") + project.sshLogin();
}

QString cacheAddress(const Project& project) {
    return scheme + project.domain + QStringLiteral("/?type=5820917364");
}
