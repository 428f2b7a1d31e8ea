#pragma once

#include <QString>

#include <exception>

/// The base of every component's error. The description is the German sentence shown to the user.
class Failure : public std::exception {
  public:
    [[nodiscard]] virtual QString description() const = 0;

    [[nodiscard]] const char* what() const noexcept override { return "Failure"; }
};
