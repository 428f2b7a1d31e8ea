#pragma once

#include "System/Network/Http.h"

/// Sends one HTTP/1.1 request over a connection of its own, and never a second time: QNetworkAccessManager
/// repeats a request, a POST as well, when the connection ends before the answer's head. A body that it
/// cannot read twice prevents that, but Qt 6.4 then frees memory twice. Main thread.
namespace SingleRequest {

/// `request`: address (http or https), raw headers and TLS configuration are used. Limits and failures as in
/// Http::exchange; a redirect is returned as the answer.
QCoro::Task<HttpAnswer> exchange(QNetworkRequest request, QByteArray method, QByteArray body,
                                 std::chrono::milliseconds limit, qint64 largestBody);

} // namespace SingleRequest
