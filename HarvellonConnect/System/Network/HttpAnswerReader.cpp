#include "System/Network/HttpAnswerReader.h"

#include <QList>

namespace {
constexpr qsizetype largestHead = 64 * 1024; // bytes, as of a chunk's size line
const QByteArray lineEnd("\r\n");

std::optional<qint64> number(const QByteArray& text, int base) {
    bool ok = !text.startsWith('-') && !text.startsWith('+');
    const qint64 value = ok ? text.toLongLong(&ok, base) : 0;
    return ok ? std::optional(value) : std::nullopt;
}
} // namespace

HttpAnswerReader::State HttpAnswerReader::read(const QByteArray& bytes) {
    if (m_state != State::incomplete)
        return m_state;
    m_input += bytes;
    while (m_state == State::incomplete && !m_headRead && readHead()) {
    }
    if (m_state == State::incomplete && m_headRead)
        readBody();
    return m_state;
}

HttpAnswerReader::State HttpAnswerReader::end() {
    if (m_state == State::incomplete && m_headRead && m_framing == Framing::untilEnd)
        m_state = State::complete;
    return m_state;
}

/// Whether a whole head was there.
bool HttpAnswerReader::readHead() {
    constexpr qsizetype behindVersion = 9;
    constexpr qsizetype statusDigits = 3;
    const qsizetype size = m_input.indexOf(lineEnd + lineEnd);
    const QByteArray start = m_input.left(size < 0 ? largestHead : size);
    const bool beginsWell = QByteArray("HTTP/1.").startsWith(start.left(7));
    const bool endless = size < 0 && m_input.size() >= largestHead;
    if (!beginsWell || endless)
        m_state = State::broken;
    if (size < 0 || m_state == State::broken)
        return false;

    QList<QByteArray> lines = start.split('\n');
    const QByteArray status = lines.takeFirst().mid(behindVersion, statusDigits);
    m_status = static_cast<int>(number(status, 10).value_or(0));
    m_input.remove(0, size + 2 * lineEnd.size());
    m_framing = Framing::untilEnd;
    m_length.reset();
    for (const QByteArray& line : lines) {
        if (!readHeader(line))
            m_state = State::broken;
    }
    const bool informational = m_status >= 100 && m_status < 200;
    if (m_status < 100 || m_status == 101) // we have asked for no other protocol
        m_state = State::broken;
    if (m_status == 204 || m_status == 304)
        m_framing = Framing::none;
    m_headRead = !informational;
    return true;
}

/// False for a header that makes the length of the answer unclear.
bool HttpAnswerReader::readHeader(const QByteArray& line) {
    const qsizetype colon = line.indexOf(':');
    const QByteArray name = line.left(colon).toLower();
    const QByteArray value = line.mid(colon + 1).trimmed().toLower();
    if (name == "transfer-encoding") {
        m_framing = Framing::chunks;
        return value == "chunked";
    }
    if (name != "content-length")
        return true;
    const std::optional<qint64> length = number(value, 10);
    const bool unclear = !length || (m_length && m_length != length);
    m_length = length;
    if (m_framing != Framing::chunks)
        m_framing = Framing::length;
    return !unclear;
}

void HttpAnswerReader::readBody() {
    if (m_framing == Framing::chunks) {
        readChunks();
    } else if (m_framing == Framing::none) {
        m_state = State::complete;
    } else {
        m_body += m_input;
        m_input.clear();
        if (m_framing == Framing::length && *m_length <= m_largestBody && m_body.size() >= *m_length) {
            m_body.truncate(*m_length);
            m_state = State::complete;
        } else if (m_body.size() > m_largestBody || m_length.value_or(0) > m_largestBody) {
            m_state = State::tooLarge;
        }
    }
}

void HttpAnswerReader::readChunks() {
    for (;;) {
        const qsizetype sizeEnd = m_input.indexOf(lineEnd);
        if (sizeEnd < 0) {
            if (m_input.size() >= largestHead)
                m_state = State::broken;
            return;
        }
        const QByteArray sizeText = m_input.left(sizeEnd);
        const std::optional<qint64> size = number(sizeText.split(';').first().trimmed(), 16);
        if (!size)
            m_state = State::broken;
        else if (*size == 0) // headers may follow, but none that we need
            m_state = State::complete;
        else if (*size > m_largestBody - m_body.size())
            m_state = State::tooLarge;
        const qsizetype start = sizeEnd + lineEnd.size();
        if (m_state != State::incomplete || m_input.size() < start + *size + lineEnd.size())
            return;
        if (m_input.mid(start + *size, lineEnd.size()) != lineEnd) {
            m_state = State::broken;
            return;
        }
        m_body += m_input.mid(start, *size);
        m_input.remove(0, start + *size + lineEnd.size());
    }
}
