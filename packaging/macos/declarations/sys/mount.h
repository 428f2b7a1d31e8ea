#pragma once

#include <cstdint>

struct statfs {
    char f_mntonname[1024];
    char f_mntfromname[1024];
    char f_fstypename[16];
};
enum { MNT_NOWAIT = 2 };
extern "C" int getfsstat(struct statfs* buf, int bufsize, int mode);
