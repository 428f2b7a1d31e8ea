#pragma once

#include_next <unistd.h>

extern "C" int getpeereid(int socket, uid_t* euid, gid_t* egid);
