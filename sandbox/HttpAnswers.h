#pragma once

#include "sandbox/Faults.h"

#include <QString>

#include <atomic>
#include <thread>

namespace httplib {
class Server;
struct Request;
struct Response;
} // namespace httplib

namespace sandbox {

constexpr const char* html = "text/html; charset=utf-8";
constexpr const char* json = "application/json";

RecordedRequest recorded(const httplib::Request& request);

void send(httplib::Response& response, int status, const QByteArray& body, const char* type);

/// Plays `fault`, for no longer than until `stopping`; true when that was the whole answer.
bool misbehaves(const Fault& fault, const httplib::Request& request, httplib::Response& response,
                const std::atomic<bool>& stopping);

/// Makes `server` listen on 127.0.0.1, on `wantedPort` when it is free and not 0, and returns the port.
/// `thread` answers from then on, and ends with the server. Throws std::runtime_error.
int serve(httplib::Server& server, int wantedPort, std::thread& thread);

} // namespace sandbox
