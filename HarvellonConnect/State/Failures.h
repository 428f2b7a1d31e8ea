#pragma once

#include "System/Failure.h"

#include <QString>

#include <exception>

/// The sentence that a component's failure says of itself, unreworded. For use where a caught failure ends.
inline QString descriptionOf(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const Failure& known) {
        return known.description();
    } catch (const std::exception& error) {
        return QString::fromLocal8Bit(error.what());
    }
}
