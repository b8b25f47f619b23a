#pragma once

#include "wApi/wTypes.h"

#include <ctime>
#include <functional>
#include <memory>
#include <sys/types.h>

namespace ZuBench
{

/// A server in a process of its own, so that its CPU time can be measured. Must be constructed before this process
/// starts a thread.
class ServerProcess final
{
public:
    /// Starts the server on a free port of the loopback address and sets `port`. The server ends when the returned
    /// object is destroyed.
    using Starter = std::function<std::shared_ptr<void>(uint16& port)>;

    explicit ServerProcess(Starter const& start);
    ~ServerProcess(); ///< ends the process

    ServerProcess(ServerProcess const&) = delete;
    ServerProcess& operator=(ServerProcess const&) = delete;

    uint16 Port() const
    {
        return port;
    }

    /// The CPU clock of all threads of the server, for `Stopwatch`.
    clockid_t Clock() const
    {
        return clock;
    }

private:
    pid_t process = -1;
    int leash = -1; // a pipe: when this process ends, so does the server
    uint16 port = 0;
    clockid_t clock{};
};

} // namespace ZuBench
