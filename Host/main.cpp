#include "Host/HostProgram.h"

#include <csignal>
#include <iostream>
#include <pthread.h>

int main(int count, char** arguments)
{
    // Blocked before the first thread is made, so that every thread inherits it and the signals wait for who asks.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGTERM);
    sigaddset(&stopSignals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // a reader that goes away is an error of that write and no more

    return ZuHost::RunHost(std::vector<std::string>(arguments, arguments + count), std::cout, std::cerr,
                           [&stopSignals] {
        int received = 0;
        sigwait(&stopSignals, &received);
    });
}
