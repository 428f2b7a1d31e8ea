#pragma once

#include <cstdint>

struct statfs {
    char f_mntonname[1024];
};
enum { MNT_NOWAIT = 2 };
extern "C" int getfsstat(struct statfs* buf, int bufsize, int mode);
