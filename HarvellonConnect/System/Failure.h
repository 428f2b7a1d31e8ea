#pragma once

#include <QString>

#include <exception>
#include <utility>

/// The base of every component's error. The description is the German sentence shown to the user.
class Failure : public std::exception {
  public:
    [[nodiscard]] virtual QString description() const = 0;

    [[nodiscard]] const char* what() const noexcept override { return "Failure"; }
};

/// A failure of which nothing but its sentence is told. Components derive a type of their own.
class TextFailure : public Failure {
  public:
    explicit TextFailure(QString description) : m_description(std::move(description)) {}

    [[nodiscard]] QString description() const override { return m_description; }

  private:
    QString m_description;
};
