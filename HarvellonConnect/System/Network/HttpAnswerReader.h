#pragma once

#include <QByteArray>

#include <optional>

/// Reads one answer of HTTP/1.1 as its bytes arrive, informational answers before it included. Never throws.
/// Any thread.
class HttpAnswerReader {
  public:
    enum class State {
        incomplete,
        complete,
        tooLarge, ///< its body goes beyond the limit
        broken,   ///< this is no HTTP
    };

    /// `largestBody`: in bytes.
    explicit HttpAnswerReader(qint64 largestBody) : m_largestBody(largestBody) {}

    /// Takes what has arrived; bytes behind the answer are ignored.
    State read(const QByteArray& bytes);
    /// The connection has ended, which completes an answer of unknown length.
    State end();

    [[nodiscard]] int status() const { return m_status; }

    [[nodiscard]] const QByteArray& body() const { return m_body; } ///< when complete

  private:
    enum class Framing { none, length, chunks, untilEnd };

    bool readHead();
    bool readHeader(const QByteArray& line);
    void readBody();
    void readChunks();

    const qint64 m_largestBody;
    State m_state = State::incomplete;
    QByteArray m_input; ///< not read yet
    bool m_headRead = false;
    int m_status = 0;
    Framing m_framing = Framing::untilEnd;
    std::optional<qint64> m_length;
    QByteArray m_body;
};
