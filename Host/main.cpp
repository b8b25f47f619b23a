#include "Host/HostProgram.h"
#include "Host/OrderlyStop.h"
#include "Host/ProcessGuard.h"

#include <csignal>
#include <iostream>

int main(int count, char** arguments)
{
    ZuHost::ProcessGuard::Restrict();
    ZuHost::OrderlyStop::Install();
    std::signal(SIGPIPE, SIG_IGN); // a write to a closed pipe then fails with an error

    return ZuHost::RunHost(std::vector<std::string>(arguments, arguments + count), std::cout, std::cerr,
                           &ZuHost::OrderlyStop::Wait);
}
