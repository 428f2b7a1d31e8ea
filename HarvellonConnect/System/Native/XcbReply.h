#pragma once

#include <cstdlib>
#include <memory>

struct FreeXcbReply {
    void operator()(void* reply) const { std::free(reply); } // xcb allocates replies with malloc
};

/// Owns a reply or an error of the X server.
template <typename T>
using XcbReply = std::unique_ptr<T, FreeXcbReply>;
