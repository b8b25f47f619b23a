#include "Plugins/Common/TcpServer.h"

#include "Plugins/Common/TcpClients.h"
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
#include <future>

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

std::string TextOf(tcp::endpoint const& endpoint)
{
    return EndpointText(endpoint.address().to_string(), endpoint.port());
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

/// The state from a start to the next stop. Once the I/O thread runs, it alone uses the members, except the limits and
/// posts to `io`. The thread that moves the server reads `listener` and `place` after it has waited for the move.
class TcpServer::Core final
{
public:
    Core(TcpServer& owner, TcpSettings const& settings)
        : server(owner),
          acceptRetry(io),
          sweep(io),
          maxClients(settings.maxClients),
          idleTimeoutUsec(settings.idleTimeoutUsec),
          makeRoomAfterUsec(settings.makeRoomAfterUsec)
    {
        error_code error;
        Listener const opened = Open(PlaceOf(settings), error);
        if (opened == nullptr)
        {
            Refuse(settings, error);
        }
        ListenWith(opened);
        ZU_CHECK(wThread_Construct(&thread));
        ZU_CHECK(wThread_SetName(thread, server.service.threadName.c_str()));
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

    void SetLimits(TcpSettings const& settings)
    {
        maxClients.store(settings.maxClients, std::memory_order_relaxed);
        idleTimeoutUsec.store(settings.idleTimeoutUsec, std::memory_order_relaxed);
        makeRoomAfterUsec.store(settings.makeRoomAfterUsec, std::memory_order_relaxed);
    }

    /// The address with the actual port. Called by the thread that starts and moves the server.
    tcp::endpoint const& Place() const
    {
        return place;
    }

    /// Whether a listener is open; false after a move that could not go back.
    bool IsListening() const
    {
        return listener->is_open();
    }

    /// Replaces the listener; connections stay. If the new address is refused, the old listener stays or is opened again,
    /// and the refusal is thrown.
    void MoveTo(TcpSettings const& wanted)
    {
        std::packaged_task<void()> task([this, &wanted] { Move(wanted); });
        boost::asio::post(io, [&task] { task(); });
        task.get_future().get();
    }

    void PostToEach(std::function<void(TcpConnection&)> visit)
    {
        boost::asio::post(io, [this, visit = std::move(visit)] { ForEach(visit); });
    }

private:
    using Connection = TcpClients::Connection;
    using Listener = std::shared_ptr<tcp::acceptor>; // pending operations share it

    static int Run(void* argument)
    {
        auto& core = *static_cast<Core*>(argument);
        while (!ZU_GUARD_BOUNDARY([&core] { core.io.run(); })) // returns when all is closed
        {
        }
        return 1;
    }

    /// Throws `Zu::Status::BAD_ARGUMENT` for an invalid address.
    tcp::endpoint PlaceOf(TcpSettings const& settings) const
    {
        error_code error;
        auto const address = boost::asio::ip::make_address(settings.address, error);
        if (error)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "%s cannot listen on %s: the address is not an IP address",
                     server.service.displayName.c_str(), EndpointText(settings.address, settings.port).c_str());
        }
        return {address, settings.port};
    }

    [[noreturn]] void Refuse(TcpSettings const& settings, error_code const& error) const
    {
        ZU_THROW(StatusOf(error), "%s cannot listen on %s: %s", server.service.displayName.c_str(),
                 EndpointText(settings.address, settings.port).c_str(), error.message().c_str());
    }

    /// Returns null and sets `error` if that fails.
    Listener Open(tcp::endpoint const& wanted, error_code& error)
    {
        auto opened = std::make_shared<tcp::acceptor>(io);
        opened->open(wanted.protocol(), error);
        if (!error) // allows a port on which only connections are left; a port with a listener is still refused
        {
            opened->set_option(tcp::acceptor::reuse_address(true), error);
        }
        if (!error)
        {
            opened->bind(wanted, error);
        }
        if (!error)
        {
            opened->listen(tcp::acceptor::max_listen_connections, error);
        }
        return error ? nullptr : opened;
    }

    void ListenWith(Listener const& opened)
    {
        listener = opened;
        place = opened->local_endpoint();
        Accept(opened);
    }

    void Move(TcpSettings const& wanted)
    {
        tcp::endpoint const newPlace = PlaceOf(wanted); // first: an invalid address changes nothing
        error_code error;
        Listener opened = Open(newPlace, error);
        bool const mayOverlap = error == boost::system::errc::address_in_use && newPlace.port() == place.port();
        if (mayOverlap) // the old listener itself may be in the way
        {
            CloseListener();
            opened = Open(newPlace, error);
        }
        if (opened != nullptr)
        {
            CloseListener();
            ListenWith(opened);
            return;
        }
        if (mayOverlap)
        {
            GoBack(wanted, error);
        }
        Refuse(wanted, error);
    }

    /// Opens the old listener again. If that fails, throws a refusal that names both addresses.
    void GoBack(TcpSettings const& wanted, error_code const& refusal)
    {
        error_code error;
        Listener const opened = Open(place, error);
        if (opened == nullptr)
        {
            ZU_THROW(StatusOf(refusal), "%s cannot listen on %s: %s. It cannot go back to %s either: %s",
                     server.service.displayName.c_str(), EndpointText(wanted.address, wanted.port).c_str(),
                     refusal.message().c_str(), TextOf(place).c_str(), error.message().c_str());
        }
        ListenWith(opened);
    }

    void CloseListener()
    {
        error_code ignored; // a failed close leaves nothing to do
        listener->close(ignored);
        acceptRetry.cancel();
    }

    void Accept(Listener const& opened)
    {
        opened->async_accept([this, opened](error_code const& error, tcp::socket socket) {
            if (!opened->is_open())
            {
                return;
            }
            if (error)
            {
                RetryAccept(opened);
                return;
            }
            ZU_GUARD_BOUNDARY([&] { Welcome(std::move(socket)); });
            Accept(opened);
        });
    }

    /// Waits before accepting again, for example when no descriptor is free. Retrying at once would take time from the
    /// clients.
    void RetryAccept(Listener const& opened)
    {
        acceptRetry.expires_after(ACCEPT_RETRY);
        acceptRetry.async_wait([this, opened](error_code const&) {
            if (opened->is_open())
            {
                Accept(opened);
            }
        });
    }

    void Welcome(tcp::socket socket)
    {
        error_code error;
        auto const address = socket.remote_endpoint(error).address();
        if (error)
        {
            return; // the client has gone
        }
        uint64 const places = maxClients.load(std::memory_order_relaxed);
        std::chrono::microseconds const unusedAfter(makeRoomAfterUsec.load(std::memory_order_relaxed));
        while (clients.Count() >= places)
        {
            Connection const leaving = clients.Displaced(address, places, unusedAfter);
            if (leaving == nullptr)
            {
                Count(server.counters.rejectedClients);
                return; // the socket's destructor closes it
            }
            leaving->Drop();
        }
        auto const connection =
            std::make_shared<TcpConnection>(std::move(socket), server.service.makeConversation(), server.counters,
                                            [this](Connection const& gone) { Forget(gone); });
        clients.Add(connection);
        Count(server.counters.acceptedClients);
        TellCount(); // before the first request: results flow once a client is counted
        connection->Begin();
    }

    void Forget(Connection const& connection)
    {
        clients.Remove(connection);
        TellCount();
    }

    void TellCount()
    {
        server.counters.clients.store(clients.Count(), std::memory_order_relaxed);
        ZU_GUARD_BOUNDARY([this] { server.service.clientsChanged(clients.Count()); });
    }

    void ForEach(std::function<void(TcpConnection&)> const& visit)
    {
        for (Connection const& connection : clients.All()) // a copy: `visit` may remove a connection
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
            if (!isClosing)
            {
                Sweep();
            }
        });
    }

    void CloseAll()
    {
        isClosing = true;
        CloseListener();
        sweep.cancel();
        for (Connection const& connection : clients.All())
        {
            connection->Close();
        }
        clients.Clear();
        TellCount();
    }

    TcpServer& server;
    boost::asio::io_context io{1}; // one thread: fewer locks
    Listener listener;
    tcp::endpoint place; // of the listener, or of the last one
    boost::asio::steady_timer acceptRetry;
    boost::asio::steady_timer sweep;
    TcpClients clients;
    bool isClosing = false;
    std::atomic<uint64> maxClients; // the limits apply to later events; no ordering is needed
    std::atomic<uint64> idleTimeoutUsec;
    std::atomic<uint64> makeRoomAfterUsec;
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
    NotePlace();
}

void TcpServer::Apply(TcpSettings const& wanted)
{
    if (core == nullptr)
    {
        return;
    }
    if (!wanted.HasSamePlace(applied))
    {
        Move(wanted);
    }
    core->SetLimits(wanted);
    applied = wanted;
}

void TcpServer::Stop() noexcept
{
    {
        Zu::MutexLock const guard(reachLock);
        reachable = nullptr;
        endpoint.clear();
        port = 0;
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
    return endpoint;
}

uint16 TcpServer::Port() const
{
    Zu::MutexLock const guard(reachLock);
    return port;
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

void TcpServer::Move(TcpSettings const& wanted)
{
    try
    {
        core->MoveTo(wanted);
    }
    catch (...)
    {
        if (!core->IsListening())
        {
            Stop();
        }
        throw;
    }
    NotePlace();
}

void TcpServer::NotePlace()
{
    Zu::MutexLock const guard(reachLock);
    reachable = core.get();
    endpoint = TextOf(core->Place());
    port = core->Place().port();
}

} // namespace PluginCommon
