#pragma once

#include <chrono>

namespace PluginCommon
{

/// A connection of a TcpServer. The server calls all operations on its I/O thread; none may block.
class ITcpConnection
{
public:
    using Clock = std::chrono::steady_clock;

    virtual ~ITcpConnection();

    /// Starts serving the client. Before this call the server has added the connection and called `clientsChanged`.
    virtual void Begin() = 0;

    /// Ends the connection if its client has been silent for `idleTimeout`, or has not taken its responses for too
    /// long.
    virtual void CheckDeadlines(Clock::time_point now, Clock::duration idleTimeout) = 0;

    /// Closes the socket. The server has removed the connection; do not call `Ended`.
    virtual void Close() = 0;
};

} // namespace PluginCommon
