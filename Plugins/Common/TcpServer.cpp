#include "Plugins/Common/TcpServer.h"

#include "Plugins/Common/TcpConnection.h"
#include "Plugins/Common/TcpMetrics.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <algorithm>
#include <atomic>
#include <functional>
#include <unordered_set>
#include <vector>

namespace PluginCommon
{

using boost::asio::ip::tcp;
using boost::system::error_code;

namespace
{

constexpr std::chrono::milliseconds SHORTEST_SWEEP{20};
constexpr std::chrono::milliseconds LONGEST_SWEEP{500};
constexpr std::chrono::milliseconds ACCEPT_RETRY{100};

std::string EndpointText(std::string const& address, uint16 port)
{
    bool const isVersion6 = address.find(':') != std::string::npos;
    return (isVersion6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

int32 StatusOf(error_code const& error)
{
    namespace errors = boost::system::errc;
    if (error == errors::address_in_use)
    {
        return Zu::Status::BUSY;
    }
    return error == errors::address_not_available ? Zu::Status::BAD_ARGUMENT : Zu::Status::FAILURE;
}

} // namespace

/// The state from a start to the next stop. Once the I/O thread runs, it alone uses the members, except the two limits
/// and `endpoint`, and except posts to `io`.
class TcpServer::Core final
{
public:
    Core(TcpServer& owner, TcpSettings const& settings)
        : server(owner),
          acceptor(io),
          acceptRetry(io),
          sweep(io),
          maxClients(settings.maxClients),
          idleTimeoutUsec(settings.idleTimeoutUsec)
    {
        Listen(settings);
        ZU_CHECK(wThread_Construct(&thread));
        ZU_CHECK(wThread_SetName(thread, server.service.threadName.c_str()));
        Accept();
        Sweep();
        ZU_CHECK(wThread_Start(thread, &Core::Run, this)); // last: the thread uses all members above
    }

    ~Core()
    {
        ZU_GUARD_DESTRUCTOR([this] {
            boost::asio::post(io, [this] { CloseAll(); });
            ZU_CHECK(wThread_Join(thread, wTIMEOUT_INFINITE, nullptr));
        });
    }

    Core(Core const&) = delete;
    Core& operator=(Core const&) = delete;

    void SetLimits(uint64 newMaxClients, uint64 newIdleTimeoutUsec)
    {
        maxClients.store(newMaxClients, std::memory_order_relaxed);
        idleTimeoutUsec.store(newIdleTimeoutUsec, std::memory_order_relaxed);
    }

    tcp::endpoint const& Endpoint() const
    {
        return endpoint;
    }

    void PostToEach(std::function<void(TcpConnection&)> visit)
    {
        boost::asio::post(io, [this, visit = std::move(visit)] { ForEach(visit); });
    }

private:
    using Connection = std::shared_ptr<TcpConnection>;

    static int Run(void* argument)
    {
        auto& core = *static_cast<Core*>(argument);
        while (!ZU_GUARD_BOUNDARY([&core] { core.io.run(); })) // returns when all is closed
        {
        }
        return 1;
    }

    void Listen(TcpSettings const& settings)
    {
        std::string const where = EndpointText(settings.address, settings.port);
        error_code error;
        auto const address = boost::asio::ip::make_address(settings.address, error);
        if (error)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s cannot listen on %s: the address is not an IP address",
                     server.service.displayName.c_str(), where.c_str());
        }
        tcp::endpoint const wanted(address, settings.port);
        acceptor.open(wanted.protocol(), error);
        for (auto const step : {&Core::AllowReuse, &Core::Bind, &Core::BeginListening})
        {
            if (!error)
            {
                (this->*step)(wanted, error);
            }
        }
        if (error)
        {
            ZU_THROW(StatusOf(error), "%s cannot listen on %s: %s", server.service.displayName.c_str(), where.c_str(),
                     error.message().c_str());
        }
    }

    /// Allows binding a port on which only connections in TIME_WAIT are left. Binding a port with a listener still
    /// fails.
    void AllowReuse(tcp::endpoint const&, error_code& error)
    {
        acceptor.set_option(tcp::acceptor::reuse_address(true), error);
    }

    void Bind(tcp::endpoint const& wanted, error_code& error)
    {
        acceptor.bind(wanted, error);
    }

    void BeginListening(tcp::endpoint const&, error_code& error)
    {
        acceptor.listen(tcp::acceptor::max_listen_connections, error);
        endpoint = error ? tcp::endpoint{} : acceptor.local_endpoint(error);
    }

    void Accept()
    {
        acceptor.async_accept([this](error_code const& error, tcp::socket socket) {
            if (!acceptor.is_open())
            {
                return;
            }
            if (error)
            {
                RetryAccept();
                return;
            }
            ZU_GUARD_BOUNDARY([&] { Welcome(std::move(socket)); });
            Accept();
        });
    }

    /// Waits before accepting again, for example when no descriptor is free. Retrying at once would take time from the
    /// clients.
    void RetryAccept()
    {
        acceptRetry.expires_after(ACCEPT_RETRY);
        acceptRetry.async_wait([this](error_code const&) {
            if (acceptor.is_open())
            {
                Accept();
            }
        });
    }

    void Welcome(tcp::socket socket)
    {
        if (connections.size() >= maxClients.load(std::memory_order_relaxed))
        {
            Count(server.counters.rejectedClients);
            return; // the socket's destructor closes it
        }
        auto const connection =
            std::make_shared<TcpConnection>(std::move(socket), server.service.makeConversation(), server.counters,
                                            [this](Connection const& gone) { Forget(gone); });
        connections.insert(connection);
        Count(server.counters.acceptedClients);
        TellCount(); // before the first request: results flow once a client is counted
        connection->Begin();
    }

    void Forget(Connection const& connection)
    {
        connections.erase(connection);
        TellCount();
    }

    void TellCount()
    {
        server.counters.clients.store(connections.size(), std::memory_order_relaxed);
        ZU_GUARD_BOUNDARY([this] { server.service.clientsChanged(connections.size()); });
    }

    void ForEach(std::function<void(TcpConnection&)> const& visit)
    {
        std::vector<Connection> const all(connections.begin(), connections.end());
        for (Connection const& connection : all) // a copy: `visit` may remove a connection
        {
            ZU_GUARD_BOUNDARY([&] { visit(*connection); }); // an exception must not keep `visit` from the others
        }
    }

    /// Checks the deadlines of all connections with one timer, so that a request costs no timer of its own.
    void Sweep()
    {
        std::chrono::microseconds const idleTimeout(idleTimeoutUsec.load(std::memory_order_relaxed));
        auto const writeTimeout = server.service.writeTimeout.count() > 0 ? server.service.writeTimeout : idleTimeout;
        auto const now = TcpConnection::Clock::now();
        ForEach([&](TcpConnection& connection) { connection.CheckDeadlines(now, idleTimeout, writeTimeout); });
        sweep.expires_after(std::clamp<std::chrono::microseconds>(idleTimeout / 10, SHORTEST_SWEEP, LONGEST_SWEEP));
        sweep.async_wait([this](error_code const&) {
            if (acceptor.is_open())
            {
                Sweep();
            }
        });
    }

    void CloseAll()
    {
        error_code ignored; // the I/O context closes the rest
        acceptor.close(ignored);
        acceptRetry.cancel();
        sweep.cancel();
        for (auto const& connection : connections)
        {
            connection->Close();
        }
        connections.clear();
        TellCount();
    }

    TcpServer& server;
    boost::asio::io_context io{1}; // one thread: fewer locks
    tcp::acceptor acceptor;
    tcp::endpoint endpoint; // constant once listening
    boost::asio::steady_timer acceptRetry;
    boost::asio::steady_timer sweep;
    std::unordered_set<Connection> connections;
    std::atomic<uint64> maxClients; // the limits apply to later events; no ordering is needed
    std::atomic<uint64> idleTimeoutUsec;
    wThread thread; // last: it uses all members above
};

TcpServer::TcpServer(Service servedBy, TcpCounters& serverCounters)
    : service(std::move(servedBy)), counters(serverCounters)
{
}

TcpServer::~TcpServer()
{
    Stop();
}

void TcpServer::Start(TcpSettings const& settings)
{
    if (core != nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    core = std::make_unique<Core>(*this, settings);
    applied = settings;
    Zu::MutexLock const guard(reachLock);
    reachable = core.get();
}

void TcpServer::Apply(TcpSettings const& wanted)
{
    if (core == nullptr)
    {
        return;
    }
    if (!wanted.HasSamePlace(applied))
    {
        BindAnew(wanted);
        return;
    }
    core->SetLimits(wanted.maxClients, wanted.idleTimeoutUsec);
    applied = wanted;
}

void TcpServer::Stop() noexcept
{
    {
        Zu::MutexLock const guard(reachLock);
        reachable = nullptr;
    }
    core.reset();
}

bool TcpServer::IsRunning() const
{
    Zu::MutexLock const guard(reachLock);
    return reachable != nullptr;
}

std::string TcpServer::Endpoint() const
{
    Zu::MutexLock const guard(reachLock);
    return reachable != nullptr
               ? EndpointText(reachable->Endpoint().address().to_string(), reachable->Endpoint().port())
               : std::string();
}

uint16 TcpServer::Port() const
{
    Zu::MutexLock const guard(reachLock);
    return reachable != nullptr ? reachable->Endpoint().port() : uint16{0};
}

bool TcpServer::PostToEach(std::function<bool(ITcpConversation&)> visit)
{
    Zu::MutexLock const guard(reachLock);
    if (reachable == nullptr)
    {
        return false;
    }
    reachable->PostToEach([visit = std::move(visit)](TcpConnection& connection) { connection.Visit(visit); });
    return true;
}

void TcpServer::DisconnectAll()
{
    Zu::MutexLock const guard(reachLock);
    if (reachable != nullptr)
    {
        reachable->PostToEach([](TcpConnection& connection) { connection.Drop(); });
    }
}

void TcpServer::BindAnew(TcpSettings const& wanted)
{
    TcpSettings const before = applied;
    TcpSettings present = before;
    present.port = Port(); // if a free port was taken, go back to that one
    Stop();                // first: the new address may overlap the old one on the same port
    try
    {
        Start(wanted);
    }
    catch (...)
    {
        std::exception_ptr const reason = std::current_exception();
        try
        {
            Start(present);
            applied = before;
        }
        catch (...)
        {
            ZU_LOG_CAUGHT("%s cannot go back to where it listened before", service.displayName.c_str());
        }
        std::rethrow_exception(reason);
    }
}

} // namespace PluginCommon
