#include <csignal>

#include "platform/platform.h"

namespace quirkmeter::platform {

namespace {

volatile std::sig_atomic_t Requested = 0;

void Request(int) {
    Requested = 1;
}

}  // namespace

bool TerminationRequested() {
    static bool watching = [] {
        for (int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, Request);
        return true;
    }();
    return watching && Requested != 0;
}

}  // namespace quirkmeter::platform
