#pragma once

#include <cstdint>
#include <sys/types.h>

enum { PROC_PGRP_ONLY = 2, PROC_UID_ONLY = 4 };
enum { PROC_PIDLISTFDS = 1, PROC_PIDFDVNODEPATHINFO = 2, PROX_FDTYPE_VNODE = 1 };
enum { FWRITE = 2 };

struct proc_fdinfo {
    int32_t proc_fd;
    uint32_t proc_fdtype;
};

struct proc_fileinfo {
    uint32_t fi_openflags;
};

struct vnode_info_path {
    char vip_path[1024];
};

struct vnode_fdinfowithpath {
    struct proc_fileinfo pfi;
    struct vnode_info_path pvip;
};

extern "C" int proc_listpids(uint32_t type, uint32_t typeinfo, void* buffer, int buffersize);
extern "C" int proc_pidinfo(int pid, int flavor, uint64_t arg, void* buffer, int buffersize);
extern "C" int proc_pidfdinfo(int pid, int fd, int flavor, void* buffer, int buffersize);
