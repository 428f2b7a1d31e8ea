#include "System/Native/PeerUser.h"

#include <sys/socket.h>

std::optional<uid_t> userBehind(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return std::nullopt;
    return peer.uid;
}
