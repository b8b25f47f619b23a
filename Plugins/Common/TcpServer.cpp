#include "Plugins/Common/TcpServer.h"

#include "Plugins/Common/AccessRules.h"
#include "Plugins/Common/RefusalLog.h"
#include "Plugins/Common/TcpClients.h"
#include "Plugins/Common/TcpListener.h"
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
} // namespace

/// The state from a start to the next stop. Once the I/O thread runs, it alone uses the members, except the limits and
/// posts to `io`. The thread that applies settings reads `listener` after it has waited for the I/O thread.
class TcpServer::Core final
{
public:
    using Rules = std::shared_ptr<AccessRules const>;

    Core(TcpServer& owner, TcpSettings const& settings, Rules firstRules)
        : server(owner),
          listener(io, owner.service.displayName, [this](tcp::socket socket) { Welcome(std::move(socket)); }),
          sweep(io),
          rules(std::move(firstRules)),
          refusals(owner.service.displayName, owner.service.refused),
          maxClients(settings.maxClients),
          idleTimeoutUsec(settings.idleTimeoutUsec),
          makeRoomAfterUsec(settings.makeRoomAfterUsec),
          handshakeTimeoutUsec(settings.handshakeTimeoutUsec)
    {
        listener.Open(settings.address, settings.port);
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

    /// Called by the thread that starts the server and applies settings.
    TcpListener const& Listening() const
    {
        return listener;
    }

    /// Moves the listener if `moves`, and judges every client by the new rules. Throws, with the old rules in force, as
    /// `TcpListener::Move` does.
    void Apply(TcpSettings const& wanted, bool moves, Rules const& newRules)
    {
        std::packaged_task<void()> task([&] {
            if (moves)
            {
                listener.Move(wanted.address, wanted.port);
            }
            rules = newRules; // before the next client is accepted
            ForEach([this](TcpConnection& connection) { connection.Judge(rules); });
        });
        boost::asio::post(io, [&task] { task(); });
        task.get_future().get();
    }

    void PostToEach(std::function<void(TcpConnection&)> visit)
    {
        boost::asio::post(io, [this, visit = std::move(visit)] { ForEach(visit); });
    }

private:
    using Connection = TcpClients::Connection;
    using Clock = TcpConnection::Clock;

    static int Run(void* argument)
    {
        auto& core = *static_cast<Core*>(argument);
        while (!ZU_GUARD_BOUNDARY([&core] { core.io.run(); })) // returns when all is closed
        {
        }
        return 1;
    }

    void Welcome(tcp::socket socket)
    {
        error_code error;
        auto const address = socket.remote_endpoint(error).address();
        if (error)
        {
            return; // the client has gone
        }
        if (!rules->MayConnect(address))
        {
            Count(server.counters.deniedClients);
            refusals.Note(address, "it may not connect");
            return; // the socket's destructor closes it
        }
        if (!MakeRoom(address))
        {
            Count(server.counters.rejectedClients);
            return;
        }
        auto const connection = std::make_shared<TcpConnection>(std::move(socket), server.service.makeConversation(),
                                                                rules, server.counters, refusals,
                                                                [this](Connection const& gone) { Forget(gone); });
        clients.Add(connection);
        Count(server.counters.acceptedClients);
        TellCount(); // before the first request: results flow once a client is counted
        connection->Begin();
    }

    /// Returns false if no client makes room for a new client of this address.
    bool MakeRoom(boost::asio::ip::address const& address)
    {
        uint64 const places = maxClients.load(std::memory_order_relaxed);
        std::chrono::microseconds const unusedAfter(makeRoomAfterUsec.load(std::memory_order_relaxed));
        while (clients.Count() >= places)
        {
            Connection const leaving = clients.Displaced(address, places, unusedAfter);
            if (leaving == nullptr)
            {
                return false;
            }
            leaving->Drop();
        }
        return true;
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
        TcpConnection::Deadlines const deadlines{
            .idle = idleTimeout,
            .write = server.service.writeTimeout.count() > 0 ? server.service.writeTimeout : idleTimeout,
            .handshake = std::chrono::microseconds(handshakeTimeoutUsec)};
        auto const now = Clock::now();
        ForEach([&](TcpConnection& connection) { connection.CheckDeadlines(now, deadlines); });
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
        listener.Close();
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
    TcpListener listener;
    boost::asio::steady_timer sweep;
    Rules rules;
    RefusalLog refusals;
    TcpClients clients;
    bool isClosing = false;
    std::atomic<uint64> maxClients; // the limits apply to later events; no ordering is needed
    std::atomic<uint64> idleTimeoutUsec;
    std::atomic<uint64> makeRoomAfterUsec;
    uint64 const handshakeTimeoutUsec;
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
    auto const rules = std::make_shared<AccessRules const>(settings, ReadCertificates(settings));
    core = std::make_unique<Core>(*this, settings, rules);
    NoteApplied(settings, *rules);
}

void TcpServer::Apply(TcpSettings const& wanted)
{
    if (core == nullptr)
    {
        AccessRules const faultyListsThrow(wanted);
        return;
    }
    auto const rules = std::make_shared<AccessRules const>(wanted, ReadCertificates(wanted));
    try
    {
        core->Apply(wanted, !wanted.HasSamePlace(applied), rules);
    }
    catch (...)
    {
        if (!core->Listening().IsOpen())
        {
            Stop();
        }
        throw;
    }
    core->SetLimits(wanted);
    NoteApplied(wanted, *rules);
}

bool TcpServer::ReadCertificatesAgain()
{
    if (core == nullptr || applied.security == TcpSecurity::OFF)
    {
        return false;
    }
    Apply(TcpSettings(applied));
    return true;
}

void TcpServer::Stop() noexcept
{
    {
        Zu::MutexLock const guard(reachLock);
        reachable = nullptr;
        endpoint.clear();
        port = 0;
        isOpenToNetwork = false;
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

bool TcpServer::IsOpenToNetwork() const
{
    Zu::MutexLock const guard(reachLock);
    return isOpenToNetwork;
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

std::shared_ptr<ZuTls::Context const> TcpServer::ReadCertificates(TcpSettings const& settings) const
{
    try
    {
        return AccessRules::ReadCertificates(settings);
    }
    catch (Zu::Exception const& exception)
    {
        ZU_THROW_NESTED("%s cannot use TLS: %s", service.displayName.c_str(), exception.what());
    }
}

void TcpServer::NoteApplied(TcpSettings const& settings, AccessRules const& rules)
{
    applied = settings;
    auto const& place = core->Listening().Place();
    Zu::MutexLock const guard(reachLock);
    reachable = core.get();
    endpoint = EndpointText(place.address().to_string(), place.port());
    port = place.port();
    isOpenToNetwork = rules.AdmitsEveryone() && !Unmapped(place.address()).is_loopback();
}

} // namespace PluginCommon
