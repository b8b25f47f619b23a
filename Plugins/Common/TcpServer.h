#pragma once

#include "Plugins/Common/ITcpConnection.h"
#include "Plugins/Common/TcpSettings.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <utility> // the networking headers need it and do not include it

#include <boost/asio/ip/tcp.hpp>

#include <functional>
#include <memory>
#include <string>

namespace PluginCommon
{

struct ClientCounters;

/// A TCP server: binds, listens, takes clients up to a cap and looks after their deadlines, on one I/O thread that serves
/// them all. What is said with a client is the business of the connections that its owner makes.
///
/// Ownership: counters and callbacks outlive the server. Threads: `Start`, `Apply` and `Stop` belong to one thread at a
/// time, the rest to any; the callbacks run on the I/O thread.
class TcpServer final
{
public:
    using Connection = std::shared_ptr<ITcpConnection>;
    /// A connection calls it once, on the I/O thread, when it has ended by itself.
    using Ended = std::function<void(Connection const&)>;

    struct Service
    {
        char const* displayName; ///< begins the text of what cannot be started
        char const* threadName;
        std::function<Connection(boost::asio::ip::tcp::socket socket, Ended whenEnded)> makeConnection;
        std::function<void(uint64 count)> clientsChanged; ///< after each one that comes or goes
    };

    TcpServer(Service servedBy, ClientCounters& serverCounters);
    ~TcpServer(); ///< stops
    TcpServer(TcpServer const&) = delete;
    TcpServer& operator=(TcpServer const&) = delete;

    /// Listens from now on. Throws, and nothing runs, when it cannot: -997 for an address that is none of this machine's,
    /// -976 for a port that is taken, 0 for another failure, each with address and port in the text. -1000 while it runs.
    void Start(TcpSettings const& settings);

    /// Closes every connection and ends the I/O thread. Nothing happens when it does not run. Not to be called on the I/O
    /// thread.
    void Stop() noexcept;

    bool IsRunning() const;

    /// Does nothing while it does not run. The limits apply in place, to clients that come from now on and to the silence of
    /// all; another port or address is bound anew, at the price of every connection. When that fails it goes on where it
    /// was, and throws as `Start` does; when it cannot even do that, it does not run any more.
    void Apply(TcpSettings const& wanted);

    /// Where it listens, with the true port: "127.0.0.1:1502", "[::1]:1502". Empty while it does not run.
    std::string Endpoint() const;

    uint16 Port() const; ///< the true one; 0 while it does not run

    /// Calls `visit` soon for each connection that is there by then, on the I/O thread. False, and nothing is called, when
    /// the server does not run; while it stops nothing may be called either.
    bool PostToEach(std::function<void(ITcpConnection&)> visit);

private:
    class Core;

    void BindAnew(TcpSettings const& wanted);

    Service const service;
    ClientCounters& counters;
    std::unique_ptr<Core> core; // while it runs
    TcpSettings applied;

    // A leaf: guards the pointer, which is null before the core goes, so that nothing is posted to one that is gone.
    mutable Zu::Mutex reachLock;
    Core* reachable ZU_GUARDED_BY(reachLock) = nullptr;
};

} // namespace PluginCommon
