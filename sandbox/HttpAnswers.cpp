#include "sandbox/HttpAnswers.h"

#include <httplib.h>

#include <algorithm>
#include <fcntl.h>
#include <stdexcept>

namespace sandbox {

using httplib::Request;
using httplib::Response;

RecordedRequest recorded(const httplib::Request& request) {
    RecordedRequest record{QByteArray::fromStdString(request.method),
                           QByteArray::fromStdString(request.path),
                           {},
                           QByteArray::fromStdString(request.body)};
    for (const auto& [name, value] : request.headers)
        record.headers.insert(QByteArray::fromStdString(name).toLower(), QByteArray::fromStdString(value));
    return record;
}

void send(Response& response, int status, const QByteArray& body, const char* type) {
    response.status = status;
    if (body.isEmpty())
        return response.set_content(std::string(), type);
    // Not with set_content: the library would compress a long body for seconds when the client accepts that.
    response.set_content_provider(static_cast<size_t>(body.size()), type,
                                  [body](size_t offset, size_t length, httplib::DataSink& sink) {
                                      return sink.write(body.constData() + offset, length);
                                  });
}

namespace {
void stream(Response& response, int status, const Fault& fault, const std::atomic<bool>& stopping) {
    constexpr size_t announcedTooMuch = 1000;
    const auto whole = static_cast<size_t>(fault.body.size() + fault.padding);
    response.status = status;
    response.set_content_provider(
        whole + (fault.cut ? announcedTooMuch : 0), fault.contentType.constData(),
        [fault, whole, &stopping](size_t offset, size_t length, httplib::DataSink& sink) {
            constexpr size_t atOnce = 65536;
            if (stopping || offset >= whole)
                return false;
            std::this_thread::sleep_for(fault.drip);
            const size_t size = fault.drip.count() > 0 ? 1 : std::min({length, whole - offset, atOnce});
            QByteArray piece = fault.body.mid(static_cast<qsizetype>(offset), static_cast<qsizetype>(size));
            piece.append(static_cast<qsizetype>(size) - piece.size(), ' ');
            return sink.write(piece.constData(), size);
        });
}
} // namespace

bool misbehaves(const Fault& fault, const Request& request, Response& response,
                const std::atomic<bool>& stopping) {
    constexpr std::chrono::milliseconds step{20};
    constexpr int methodNotAllowed = 405;
    for (std::chrono::milliseconds waited{0}; waited < fault.delay && !stopping; waited += step)
        std::this_thread::sleep_for(std::min(step, fault.delay - waited));
    if (fault.refusePost && request.method == "POST") {
        send(response, methodNotAllowed, "{}", json);
        return true;
    }
    if (fault.status == 0 && fault.body.isEmpty() && fault.padding == 0)
        return false;
    const int status = fault.status == 0 ? 200 : fault.status;
    if (fault.padding > 0 || fault.cut || fault.drip.count() > 0)
        stream(response, status, fault, stopping);
    else
        send(response, status, fault.body, fault.contentType.constData());
    if (!fault.location.isEmpty())
        response.set_header("Location", fault.location.toStdString());
    return true;
}

int serve(httplib::Server& server, int wantedPort, std::thread& thread) {
    constexpr const char* loopback = "127.0.0.1";
    server.set_socket_options([](socket_t socket) {
        // Not the library's SO_REUSEPORT, which lets two servers have one port. And no child process may keep
        // it.
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
        ::fcntl(socket, F_SETFD, FD_CLOEXEC);
    });
    const bool taken = wantedPort > 0 && server.bind_to_port(loopback, wantedPort);
    const int port = taken ? wantedPort : server.bind_to_any_port(loopback);
    if (port <= 0)
        throw std::runtime_error("no port for the web server");
    thread = std::thread([&server] { server.listen_after_bind(); });
    while (!server.is_running())
        std::this_thread::yield();
    return port;
}

} // namespace sandbox
