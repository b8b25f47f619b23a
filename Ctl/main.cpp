#include "Ctl/Program.h"

#include <csignal>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace
{

/// Occupies the standard descriptors that the caller has closed. Otherwise a connection or a file would get their numbers,
/// and what the program prints. A write to such a descriptor fails.
void OccupyStandardDescriptors()
{
    int descriptor = open("/dev/null", O_RDONLY);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
    {
        descriptor = open("/dev/null", O_RDONLY);
    }
    close(descriptor);
}

} // namespace

int main(int count, char** arguments)
{
    OccupyStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN); // a write to a closed pipe then fails with an error

    return ZuCtl::RunCtl(std::vector<std::string>(arguments, arguments + count), std::cout, std::cerr);
}
