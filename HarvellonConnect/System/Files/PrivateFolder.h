#pragma once

#include <QString>

/// Makes `folder` where it is missing, with mode 0700, and tells whether only this user can put something
/// there, now and since it was made: the folder is no link and belongs to the user, and so does the folder
/// above; neither can be written by anybody else. A folder that others may only read is closed to them. Any
/// thread.
[[nodiscard]] bool makePrivateFolder(const QString& folder);
