#include "System/Native/PeerUser.h"

#include <unistd.h>

std::optional<uid_t> userBehind(int socket) {
    uid_t user = 0;
    gid_t group = 0;
    if (::getpeereid(socket, &user, &group) != 0)
        return std::nullopt;
    return user;
}
