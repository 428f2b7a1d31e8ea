#pragma once

#include <QString>

/// What people read as the version: "1.0.0 (42)", without the build number where it is absent or says the
/// same.
[[nodiscard]] QString appVersionText(const QString& version, const QString& buildNumber);
