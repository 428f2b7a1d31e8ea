#pragma once

#include "System/Requests/Request.h"

#include <QString>
#include <QStringList>

#include <optional>

/// What the words of a command line ask for.
struct Invocation {
    enum class Kind { program, help, version, request };

    Kind kind = Kind::program;
    Request request{};
    bool mayStart = false; ///< the program is started where it does not run

    /// Throws RequestError for wrong usage.
    static Invocation of(const QStringList& words);

    bool operator==(const Invocation&) const = default;
};

/// The text of --help.
[[nodiscard]] QString usage();
