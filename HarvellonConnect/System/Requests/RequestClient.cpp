#include "System/Requests/RequestClient.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace {
constexpr qsizetype longestAnswer = 64'000'000;
constexpr int none = -1;
} // namespace

std::optional<RequestClient> RequestClient::to(const QString& socket) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray path = QFile::encodeName(socket);
    if (path.size() >= static_cast<qsizetype>(sizeof address.sun_path))
        return std::nullopt;
    std::memcpy(address.sun_path, path.constData(), static_cast<size_t>(path.size()));
    std::signal(SIGPIPE, SIG_IGN);
    RequestClient client(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (client.m_socket == none)
        return std::nullopt;
    ::fcntl(client.m_socket, F_SETFD, FD_CLOEXEC);
    ::fcntl(client.m_socket, F_SETFL, O_NONBLOCK); // a program that stands still has a queue that is full
    if (::connect(client.m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return std::nullopt;
    return client;
}

RequestClient::RequestClient(RequestClient&& other) noexcept
    : m_socket(std::exchange(other.m_socket, none)) {}

RequestClient& RequestClient::operator=(RequestClient&& other) noexcept {
    std::swap(m_socket, other.m_socket);
    return *this;
}

RequestClient::~RequestClient() {
    if (m_socket != none)
        ::close(m_socket);
}

bool RequestClient::send(const Request& request) {
    const QByteArray line = request.toLine(); // shorter than the buffer of any socket
    return ::write(m_socket, line.constData(), static_cast<size_t>(line.size())) == line.size();
}

std::optional<Answer> RequestClient::receive(std::chrono::milliseconds limit,
                                             const std::function<bool(std::chrono::milliseconds)>& goOn) {
    constexpr std::chrono::milliseconds second = 1s;
    QElapsedTimer clock;
    clock.start();
    QByteArray line;
    std::chrono::milliseconds nextQuestion = second;
    while (line.size() < longestAnswer) {
        const std::chrono::milliseconds passed(clock.elapsed());
        pollfd ready{m_socket, POLLIN, 0};
        const auto pause = std::max(0ms, std::min(limit, nextQuestion) - passed);
        const int events = ::poll(&ready, 1, static_cast<int>(pause.count()));
        if (events <= 0) {
            const std::chrono::milliseconds now(clock.elapsed());
            if ((events < 0 && errno != EINTR) || now >= limit || !goOn(now))
                return std::nullopt;
            nextQuestion = (now / second + 1) * second;
            continue;
        }
        std::array<char, 65'536> bytes{};
        const ssize_t count = ::read(m_socket, bytes.data(), bytes.size());
        if (count <= 0)
            break;
        line.append(bytes.data(), count);
        if (line.endsWith('\n'))
            return Answer::parse(line);
    }
    return std::nullopt;
}
