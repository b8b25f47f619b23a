#include "ServerProcess.h"

#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace ZuBench
{

namespace
{

[[noreturn]] void Fail(char const* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

struct Pipe
{
    Pipe()
    {
        if (pipe(ends) != 0)
        {
            Fail("pipe");
        }
    }

    int ends[2]{};
};

[[noreturn]] void Serve(ServerProcess::Starter const& start, int portEnd, int leashEnd)
{
    uint16 port = 0;
    auto const server = start(port);
    char byte = 0;
    bool const isTold = write(portEnd, &port, sizeof port) == sizeof port;
    while (isTold && read(leashEnd, &byte, 1) > 0)
    {
    }
    _exit(0); // without the destructors: the measurement is over
}

} // namespace

ServerProcess::ServerProcess(Starter const& start)
{
    Pipe const told;
    Pipe const held;
    process = fork();
    if (process < 0)
    {
        Fail("fork");
    }
    if (process == 0)
    {
        close(told.ends[0]);
        close(held.ends[1]);
        Serve(start, told.ends[1], held.ends[0]);
    }
    close(told.ends[1]);
    close(held.ends[0]);
    leash = held.ends[1];
    bool const isTold = read(told.ends[0], &port, sizeof port) == sizeof port;
    close(told.ends[0]);
    if (!isTold || clock_getcpuclockid(process, &clock) != 0)
    {
        throw std::runtime_error("the server did not start");
    }
}

ServerProcess::~ServerProcess()
{
    // Closing the leash is not enough: a server that was started later has inherited a copy of it.
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
    close(leash);
}

} // namespace ZuBench
