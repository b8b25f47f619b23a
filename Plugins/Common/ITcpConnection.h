#pragma once

#include <chrono>

namespace PluginCommon
{

/// One client of a TcpServer. All operations come on the server's I/O thread.
class ITcpConnection
{
public:
    using Clock = std::chrono::steady_clock;

    virtual ~ITcpConnection();

    /// The server knows the connection and has told that it is here: it may serve its client.
    virtual void Begin() = 0;

    /// Ends the connection when its client has been silent, or has taken nothing, for too long.
    virtual void CheckDeadlines(Clock::time_point now, Clock::duration idleTimeout) = 0;

    /// Closes the socket; the server has let the connection go and is told nothing.
    virtual void Close() = 0;
};

} // namespace PluginCommon
