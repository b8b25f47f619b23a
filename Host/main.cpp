#include "Host/HostProgram.h"

#include <csignal>
#include <iostream>
#include <pthread.h>

int main(int count, char** arguments)
{
    // Blocked before the first thread starts, so that all threads inherit the mask and the main thread waits for the
    // signals.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGTERM);
    sigaddset(&stopSignals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // a write to a closed pipe then fails with an error

    return ZuHost::RunHost(std::vector<std::string>(arguments, arguments + count), std::cout, std::cerr,
                           [&stopSignals] {
                               int received = 0;
                               sigwait(&stopSignals, &received);
                           });
}
