#pragma once

#include <QString>

/// The version as the user sees it: "1.0.0 (42)", without the build number if that is empty or equal to
/// `version`.
[[nodiscard]] QString appVersionText(const QString& version, const QString& buildNumber);
