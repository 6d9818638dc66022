// Waits of this process that pass faster: for an answer, and between two attempts.
#pragma once

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

static int Haste = 1;

// In the place of the C library's, for the platform as well.
extern "C" int poll(pollfd* files, nfds_t count, int time) {
    return static_cast<int>(syscall(SYS_poll, files, count, time > 0 ? time / Haste + 1 : time));
}
extern "C" int nanosleep(const timespec* time, timespec*) {
    return poll(nullptr, 0, static_cast<int>(time->tv_sec * 1000 + time->tv_nsec / 1000000));
}
