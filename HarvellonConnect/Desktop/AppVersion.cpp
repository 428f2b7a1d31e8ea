#include "Desktop/AppVersion.h"

QString appVersionText(const QString& version, const QString& buildNumber) {
    if (buildNumber.isEmpty() || buildNumber == version)
        return version;
    return version + QStringLiteral(" (") + buildNumber + QLatin1Char(')');
}
