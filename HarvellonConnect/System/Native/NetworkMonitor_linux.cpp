#include "System/Native/NetworkMonitor.h"

#include "System/Logging.h"

#include <QHash>
#include <QMultiHash>
#include <QSet>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <cstring>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr unsigned loopback = 1; ///< the kernel gives this index to lo and to nothing else
constexpr unsigned groups =
    RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
constexpr size_t largestDatagram = 32768; ///< the kernel sends no longer ones
constexpr int mostAtOnce = 64;            ///< datagrams before the event loop gets its turn

/// The `T` that `bytes` begin with; nothing when they are too few.
template <typename T>
std::optional<T> headOf(QByteArrayView bytes) {
    if (bytes.size() < qsizetype{sizeof(T)})
        return std::nullopt;
    T head;
    std::memcpy(&head, bytes.data(), sizeof head);
    return head;
}

/// Calls `each` with the header and the payload of every record in `bytes`, up to one that is cut short.
/// Messages and attributes alike tell their length and begin at a multiple of four.
template <typename Header, auto length, typename Each>
void forEachRecord(QByteArrayView bytes, Each each) {
    while (const auto header = headOf<Header>(bytes)) {
        const qsizetype size = (*header).*length;
        if (size < qsizetype{sizeof(Header)} || size > bytes.size())
            return;
        each(*header, bytes.sliced(sizeof(Header), size - qsizetype{sizeof(Header)}));
        bytes = bytes.sliced(std::min<qsizetype>(NLMSG_ALIGN(size), bytes.size()));
    }
}

using Attributes = QHash<int, QByteArray>; ///< by type

Attributes attributesIn(QByteArrayView bytes) {
    Attributes attributes;
    forEachRecord<rtattr, &rtattr::rta_len>(bytes, [&](const rtattr& header, QByteArrayView value) {
        attributes.insert(header.rta_type, value.toByteArray());
    });
    return attributes;
}

/// The chosen attributes as one text that can be compared.
QByteArray fingerprint(const Attributes& attributes, std::initializer_list<int> types) {
    QByteArray text;
    for (const int type : types) {
        if (attributes.contains(type))
            text.append(static_cast<char>(type)).append(attributes.value(type));
    }
    return text;
}

/// What the kernel has told so far, so that a message that repeats it is no news: addresses and routes come
/// again every few minutes with a renewed lifetime, links at each search for wireless networks.
class KnownNetwork {
  public:
    /// Whether the message changes the way to the network.
    bool learn(int type, QByteArrayView message) {
        switch (type) {
        case RTM_NEWLINK:
        case RTM_DELLINK:
            return learnLink(type == RTM_NEWLINK, message);
        case RTM_NEWADDR:
        case RTM_DELADDR:
            return learnAddress(type == RTM_NEWADDR, message);
        case RTM_NEWROUTE:
        case RTM_DELROUTE:
            return learnRoute(type == RTM_NEWROUTE, message);
        default:
            return false;
        }
    }

  private:
    bool learnLink(bool exists, QByteArrayView message) {
        const auto link = headOf<ifinfomsg>(message);
        // Messages of another family tell what a bridge does with its ports.
        if (!link || link->ifi_family != AF_UNSPEC)
            return false;
        const auto index = static_cast<unsigned>(link->ifi_index);
        const bool isRunning = exists && (link->ifi_flags & IFF_RUNNING) != 0;
        if (isRunning == m_running.contains(index))
            return false;
        if (isRunning) {
            m_running.insert(index);
        } else {
            m_running.remove(index);
            m_routes.clear(); // see below
        }
        return m_addresses.contains(index);
    }

    bool learnAddress(bool exists, QByteArrayView message) {
        const auto address = headOf<ifaddrmsg>(message);
        if (!address || address->ifa_index == loopback || address->ifa_scope >= RT_SCOPE_LINK)
            return false;
        const unsigned flags = address->ifa_flags;
        // An IPv6 address is announced before it is known to be unique, when it can rarely be used.
        const bool isUsable = exists && (flags & IFA_F_DADFAILED) == 0 &&
                              ((flags & IFA_F_TENTATIVE) == 0 || (flags & IFA_F_OPTIMISTIC) != 0);
        const QByteArray key =
            static_cast<char>(address->ifa_prefixlen) +
            fingerprint(attributesIn(message.sliced(sizeof(ifaddrmsg))), {IFA_LOCAL, IFA_ADDRESS});
        const bool wasKnown = m_addresses.remove(address->ifa_index, key) > 0;
        if (isUsable)
            m_addresses.insert(address->ifa_index, key);
        if (!exists)
            m_routes.clear(); // see below
        return !exists || isUsable != wasKnown;
    }

    bool learnRoute(bool exists, QByteArrayView message) {
        const auto route = headOf<rtmsg>(message);
        if (!route || route->rtm_table != RT_TABLE_MAIN || (route->rtm_flags & RTM_F_CLONED) != 0)
            return false;
        const Attributes attributes = attributesIn(message.sliced(sizeof(rtmsg)));
        const auto interface = headOf<unsigned>(attributes.value(RTA_OIF));
        if (interface == loopback || isLinkLocal(attributes.value(RTA_DST)))
            return false;
        // A route that replaces another is told without the end of the other one; both have the same place.
        const std::array<unsigned char, 4> numbers{route->rtm_family, route->rtm_dst_len, route->rtm_src_len,
                                                   route->rtm_tos};
        const QByteArray place = QByteArray(reinterpret_cast<const char*>(numbers.data()), numbers.size()) +
                                 fingerprint(attributes, {RTA_DST, RTA_SRC, RTA_PRIORITY});
        if (!exists) {
            m_routes.remove(place);
            return true;
        }
        const QByteArray way =
            static_cast<char>(route->rtm_type) +
            fingerprint(attributes, {RTA_GATEWAY, RTA_VIA, RTA_OIF, RTA_PREFSRC, RTA_MULTIPATH});
        return std::exchange(m_routes[place], way) != way;
    }

    /// fe80::/10: every interface has such a route, and it leads no further.
    static bool isLinkLocal(const QByteArray& destination) {
        return destination.size() == 16 && static_cast<unsigned char>(destination.at(0)) == 0xfe &&
               (static_cast<unsigned char>(destination.at(1)) & 0xc0) == 0x80;
    }

    QSet<unsigned> m_running;                     ///< interfaces that are up and connected
    QMultiHash<unsigned, QByteArray> m_addresses; ///< usable ones, by interface
    /// Where each route leads, by its place in the table. IPv4 routes end without a message when their
    /// interface does, in older kernels also with their source address, so all are forgotten then: a route
    /// that is told once too often does no harm, one that is taken for known does.
    QHash<QByteArray, QByteArray> m_routes;
};

/// The kernel's own announcements.
class RouteSocket : public QObject {
  public:
    explicit RouteSocket(std::function<void()> onChange)
        : m_onChange(std::move(onChange)),
          m_socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE)) {
        sockaddr_nl address{};
        address.nl_family = AF_NETLINK;
        address.nl_groups = groups;
        if (m_socket < 0 || ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            warn();
            return;
        }
        m_notifier = std::make_unique<QSocketNotifier>(m_socket, QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { readMessages(); });
        listAll();
    }

    ~RouteSocket() override {
        m_notifier.reset();
        if (m_socket >= 0)
            ::close(m_socket);
    }
    Q_DISABLE_COPY_MOVE(RouteSocket)

  private:
    void readMessages() {
        for (int i = 0; i < mostAtOnce; ++i) {
            if (receive())
                continue;
            // Not earlier: until the queue is empty, the kernel goes on dropping messages without a word.
            if (std::exchange(m_isIncomplete, false))
                listAll();
            return;
        }
    }

    /// Learns what there is. The kernel answers from inside these calls, so nothing waits.
    void listAll() {
        m_known = {};
        for (const uint16_t type : {RTM_GETLINK, RTM_GETADDR, RTM_GETROUTE}) {
            struct {
                nlmsghdr header;
                rtgenmsg family;
            } request{};

            request.header.nlmsg_len = NLMSG_LENGTH(sizeof(rtgenmsg));
            request.header.nlmsg_type = type;
            request.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
            request.family.rtgen_family = AF_UNSPEC;
            m_isListing = ::send(m_socket, &request, request.header.nlmsg_len, 0) >= 0;
            while (m_isListing && receive()) {
            }
        }
    }

    /// Takes one datagram from the queue. False when there is none.
    bool receive() {
        sockaddr_nl sender{};
        iovec part{m_buffer.data(), m_buffer.size()};
        msghdr datagram{};
        datagram.msg_name = &sender;
        datagram.msg_namelen = sizeof sender;
        datagram.msg_iov = &part;
        datagram.msg_iovlen = 1;
        const ssize_t size = ::recvmsg(m_socket, &datagram, 0);
        if (size < 0)
            return failed(errno);
        const bool isFromKernel = sender.nl_pid == 0; // any process may write to this socket
        if (isFromKernel && (datagram.msg_flags & MSG_TRUNC) != 0)
            lose();
        else if (isFromKernel)
            read(QByteArrayView(m_buffer.data(), size));
        return true;
    }

    /// Whether there may be more to receive after this error.
    bool failed(int error) {
        switch (error) {
        case EINTR:
            return true;
        case EAGAIN:
            return false;
        case ENOBUFS: // more messages than the queue holds
        case ENOMEM:
            lose();
            return true;
        default:
            warn();
            m_notifier->setEnabled(false); // the socket may stay readable for ever
            return false;
        }
    }

    void lose() {
        m_isIncomplete = true;
        m_onChange();
    }

    void read(QByteArrayView datagram) {
        forEachRecord<nlmsghdr, &nlmsghdr::nlmsg_len>(
            datagram, [this](const nlmsghdr& header, QByteArrayView message) {
                if (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR)
                    m_isListing = false;
                const bool isListed = (header.nlmsg_flags & NLM_F_MULTI) != 0;
                if (m_known.learn(header.nlmsg_type, message) && !isListed)
                    m_onChange();
            });
    }

    static void warn() {
        qCWarning(lcDesktop) << "network changes are not noticed:" << qt_error_string(errno);
    }

    std::function<void()> m_onChange;
    int m_socket;
    bool m_isListing = false;
    bool m_isIncomplete = false; ///< messages were lost; what is known must be listed anew
    KnownNetwork m_known;
    std::array<char, largestDatagram> m_buffer{};
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace

std::unique_ptr<QObject> NetworkMonitor::watch(std::function<void()> onChange) {
    return std::make_unique<RouteSocket>(std::move(onChange));
}
