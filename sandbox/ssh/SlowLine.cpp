#include "sandbox/ssh/SlowLine.h"

#include <QByteArray>

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <deque>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace sandbox {

namespace {
using Clock = std::chrono::steady_clock;
constexpr size_t chunkSize = 4096;
constexpr size_t mostQueued = 64 * 1024; // as a router would: then the sender has to wait

sockaddr_in loopback(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void prepare(int socket) {
    const int on = 1;
    ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    // Large buffers of the system would take what the line has not carried yet.
    const int buffer = 32 * 1024;
    ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &buffer, sizeof buffer);
    ::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &buffer, sizeof buffer);
    ::fcntl(socket, F_SETFL, ::fcntl(socket, F_GETFL) | O_NONBLOCK);
    ::fcntl(socket, F_SETFD, FD_CLOEXEC);
}

/// One direction of a connection.
struct Way {
    struct Chunk {
        Clock::time_point due;
        QByteArray data;
    };

    int from = -1;
    int to = -1;
    std::deque<Chunk> chunks;
    size_t queued = 0;
    Clock::time_point free; ///< when the line can take the next chunk
    bool ended = false;     ///< `from` has nothing more to send
    bool told = false;      ///< `to` knows
};
} // namespace

struct SlowLine::Connection {
    int client = -1;
    int server = -1;
    std::array<Way, 2> ways;
    bool frozen = false;
    bool broken = false;

    Connection(int clientSocket, int serverSocket) : client(clientSocket), server(serverSocket) {
        ways[0].from = ways[1].to = client;
        ways[0].to = ways[1].from = server;
    }

    ~Connection() {
        ::close(client);
        ::close(server);
    }

    Q_DISABLE_COPY_MOVE(Connection)

    void read(Way& way, const Quality& quality) {
        std::array<char, chunkSize> buffer{};
        const ssize_t size = ::recv(way.from, buffer.data(), buffer.size(), 0);
        if (size > 0) {
            const auto now = Clock::now();
            way.free = std::max(way.free, now);
            if (quality.bytesPerSecond > 0)
                way.free += std::chrono::nanoseconds(size * 1'000'000'000LL / quality.bytesPerSecond);
            way.chunks.push_back({way.free + quality.delay, QByteArray(buffer.data(), size)});
            way.queued += static_cast<size_t>(size);
        } else if (size == 0) {
            way.ended = true;
        } else if (errno != EAGAIN) {
            broken = true;
        }
    }

    void write(Way& way) {
        while (!way.chunks.empty() && way.chunks.front().due <= Clock::now()) {
            QByteArray& data = way.chunks.front().data;
            const ssize_t sent =
                ::send(way.to, data.constData(), static_cast<size_t>(data.size()), MSG_NOSIGNAL);
            if (sent < 0) {
                broken = errno != EAGAIN;
                return;
            }
            way.queued -= static_cast<size_t>(sent);
            data.remove(0, sent);
            if (!data.isEmpty())
                return;
            way.chunks.pop_front();
        }
        if (way.ended && way.chunks.empty() && !way.told) {
            ::shutdown(way.to, SHUT_WR);
            way.told = true;
        }
    }

    [[nodiscard]] bool isOver() const { return broken || (ways[0].told && ways[1].told); }
};

SlowLine::SlowLine(int serverPort) : m_serverPort(serverPort) {
    std::array<int, 2> ends{};
    m_listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (m_listener >= 0)
        prepare(m_listener); // before connections are accepted, which take over the size of its buffers
    if (m_listener < 0 || ::bind(m_listener, generic, length) != 0 || ::listen(m_listener, 64) != 0 ||
        ::getsockname(m_listener, generic, &length) != 0 || ::pipe(ends.data()) != 0)
        throw std::runtime_error("the slow line cannot listen");
    m_port = ntohs(address.sin_port);
    m_wakeRead = ends[0];
    m_wakeWrite = ends[1];
    for (const int descriptor : {m_wakeRead, m_wakeWrite})
        prepare(descriptor);
    m_thread = std::thread([this] { work(); });
}

SlowLine::~SlowLine() {
    m_stopping = true;
    wake();
    m_thread.join();
    for (const int descriptor : {m_listener, m_wakeRead, m_wakeWrite})
        ::close(descriptor);
}

void SlowLine::wake() const {
    [[maybe_unused]] const ssize_t written = ::write(m_wakeWrite, "", 1);
}

void SlowLine::setQuality(const Quality& quality) {
    const std::lock_guard lock(m_mutex);
    m_quality = quality;
}

void SlowLine::freezeConnections() {
    {
        const std::lock_guard lock(m_mutex);
        m_freeze = true;
    }
    wake();
    // Until it has happened: what a caller sends next must not get through.
    for (bool waiting = true; waiting; std::this_thread::sleep_for(std::chrono::milliseconds(1))) {
        const std::lock_guard lock(m_mutex);
        waiting = m_freeze;
    }
}

void SlowLine::thawConnections() {
    {
        const std::lock_guard lock(m_mutex);
        m_thaw = true;
    }
    wake();
}

void SlowLine::work() {
    std::vector<std::unique_ptr<Connection>> connections;
    while (!m_stopping) {
        std::vector<pollfd> waiting{{m_listener, POLLIN, 0}, {m_wakeRead, POLLIN, 0}};
        auto next = Clock::now() + std::chrono::seconds(10);
        for (const auto& connection : connections) {
            for (const Way& way : connection->ways) {
                const bool mayRead = !connection->frozen && !way.ended && way.queued < mostQueued;
                const bool isDue = !connection->frozen && !way.chunks.empty();
                if (isDue)
                    next = std::min(next, way.chunks.front().due);
                waiting.push_back({way.from, static_cast<short>(mayRead ? POLLIN : 0), 0});
            }
        }
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
        ::poll(waiting.data(), waiting.size(), static_cast<int>(std::clamp<long long>(left, 0, 10'000)));
        std::array<char, 64> ignored{};
        while (::read(m_wakeRead, ignored.data(), ignored.size()) > 0) {
        }
        Quality quality;
        {
            const std::lock_guard lock(m_mutex);
            quality = m_quality;
            for (const auto& connection : connections)
                connection->frozen = (connection->frozen || m_freeze) && !m_thaw;
            m_freeze = m_thaw = false;
        }
        size_t index = 2;
        for (const auto& connection : connections) {
            for (Way& way : connection->ways) {
                const short events = waiting.at(index++).revents;
                if (connection->frozen)
                    continue;
                if ((events & (POLLIN | POLLHUP | POLLERR)) != 0 && !way.ended && way.queued < mostQueued)
                    connection->read(way, quality);
                connection->write(way);
            }
        }
        std::erase_if(connections, [](const auto& connection) { return connection->isOver(); });
        const int client = ::accept(m_listener, nullptr, nullptr);
        if (client < 0)
            continue;
        const int server = ::socket(AF_INET, SOCK_STREAM, 0);
        const sockaddr_in address = loopback(m_serverPort);
        const bool reached =
            ::connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        prepare(client);
        prepare(server);
        auto connection = std::make_unique<Connection>(client, server);
        if (reached)
            connections.push_back(std::move(connection));
    }
}

} // namespace sandbox
