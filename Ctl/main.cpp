#include "Ctl/Program.h"

#include <csignal>
#include <iostream>

int main(int count, char** arguments)
{
    std::signal(SIGPIPE, SIG_IGN); // a write to a closed pipe then fails with an error

    return ZuCtl::RunCtl(std::vector<std::string>(arguments, arguments + count), std::cout, std::cerr);
}
