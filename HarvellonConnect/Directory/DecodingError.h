#pragma once

#include <QString>

#include <exception>

/// JSON that is not the record it should be. `path` names the field, `description` the reason (for the log
/// and for tests; users see the message of the caller).
class DecodingError : public std::exception {
  public:
    DecodingError(QString path, QString description)
        : m_path(std::move(path)), m_description(std::move(description)) {}

    [[nodiscard]] QString path() const { return m_path; }

    [[nodiscard]] QString description() const { return m_description; }

    [[nodiscard]] const char* what() const noexcept override { return "DecodingError"; }

  private:
    QString m_path;
    QString m_description;
};
