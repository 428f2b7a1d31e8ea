#pragma once

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QList>

#include <chrono>
#include <mutex>

namespace sandbox {

enum class Endpoint { token, directory, site };

/// How one endpoint misbehaves. The default is not at all.
struct Fault {
    int status = 0;                     ///< answered instead of the real answer; 0 for none
    bool refusePost = false;            ///< 405 on POST
    std::chrono::milliseconds delay{0}; ///< before any answer, the real one included
    QByteArray body{};                  ///< sent instead of the real body when not empty
    QByteArray contentType{"application/json"};
    QByteArray location{}; ///< of a redirect; goes with a status of 3xx

    qint64 padding = 0;                ///< number of blanks sent after the body
    bool cut = false;                  ///< Content-Length is larger than the body sent
    std::chrono::milliseconds drip{0}; ///< before each single byte of the body

    /// Reads the members above in snake_case, all optional, durations in milliseconds. Throws
    /// std::invalid_argument for an unknown member.
    static Fault fromJson(const QJsonObject& object);
};

/// One request as it arrived. Header names are lower case.
struct RecordedRequest {
    QByteArray method;
    QByteArray path; ///< without the query
    QHash<QByteArray, QByteArray> headers;
    QByteArray body;
};

/// The faults to simulate for each endpoint, and the requests that arrived. Any thread.
class Faults {
  public:
    /// Holds until the next call for this endpoint; a default Fault ends it.
    void set(Endpoint endpoint, const Fault& fault);
    [[nodiscard]] Fault of(Endpoint endpoint) const;

    void record(const RecordedRequest& request);
    /// The newest 200 in the order of arrival; all of them for an empty path.
    [[nodiscard]] QList<RecordedRequest> requests(const QByteArray& path) const;

  private:
    mutable std::mutex m_mutex;
    QHash<Endpoint, Fault> m_faults;
    QList<RecordedRequest> m_requests;
};

} // namespace sandbox
