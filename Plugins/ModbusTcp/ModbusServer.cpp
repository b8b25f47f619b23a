#include "Plugins/ModbusTcp/ModbusServer.h"

#include "Plugins/ModbusTcp/ModbusConnection.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "wApi/wThread.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <algorithm>
#include <atomic>
#include <unordered_set>

namespace ModbusTcp
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

/// What lives from a start to the next stop. All but the limits belongs to the I/O thread once it runs.
class ModbusServer::Core final
{
public:
    Core(ModbusServer& owner, Settings const& settings)
        : server(owner),
          acceptor(io),
          acceptRetry(io),
          sweep(io),
          maxClients(settings.maxClients),
          idleTimeoutUsec(settings.idleTimeoutUsec)
    {
        Listen(settings);
        ZU_CHECK(wThread_Construct(&thread));
        ZU_CHECK(wThread_SetName(thread, "ModbusTcp.Io"));
        Accept();
        Sweep();
        ZU_CHECK(wThread_Start(thread, &Core::Run, this)); // last: the thread uses all of the above
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

private:
    static int Run(void* argument)
    {
        auto& core = *static_cast<Core*>(argument);
        while (!ZU_GUARD_BOUNDARY([&core] { core.io.run(); })) // ends when all is closed
        {
        }
        return 1;
    }

    void Listen(Settings const& settings)
    {
        std::string const where = EndpointText(settings.address, settings.port);
        error_code error;
        auto const address = boost::asio::ip::make_address(settings.address, error);
        if (error)
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "Modbus TCP cannot listen on %s: the address is not an IP address",
                     where.c_str());
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
            ZU_THROW(StatusOf(error), "Modbus TCP cannot listen on %s: %s", where.c_str(), error.message().c_str());
        }
    }

    /// A port whose last connections still linger can be taken again; one on which somebody listens cannot.
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

    /// Out of descriptors, say: trying again at once would only burn time that the clients need.
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
            return; // the socket closes as it goes
        }
        auto const connection =
            std::make_shared<ModbusConnection>(std::move(socket), server.model, server.counters,
                                               [this](std::shared_ptr<ModbusConnection> const& gone) { Forget(gone); });
        connections.insert(connection);
        Count(server.counters.acceptedClients);
        TellCount(); // before its first request: results flow from the moment it is here
        connection->Begin();
    }

    void Forget(std::shared_ptr<ModbusConnection> const& connection)
    {
        connections.erase(connection);
        TellCount();
    }

    void TellCount()
    {
        server.counters.clients.store(connections.size(), std::memory_order_relaxed);
        ZU_GUARD_BOUNDARY([this] { server.clientsChanged(connections.size()); });
    }

    /// One timer looks after the deadlines of all: no client costs a timer of its own with each request.
    void Sweep()
    {
        std::chrono::microseconds const idleTimeout(idleTimeoutUsec.load(std::memory_order_relaxed));
        auto const now = ModbusConnection::Clock::now();
        std::vector<std::shared_ptr<ModbusConnection>> const all(connections.begin(), connections.end());
        for (auto const& connection : all) // a copy: one that ends leaves the set
        {
            connection->CheckDeadlines(now, idleTimeout);
        }
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
        error_code ignored; // whatever does not close goes with the I/O context
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

    ModbusServer& server;
    boost::asio::io_context io{1}; // one thread: it needs fewer locks
    tcp::acceptor acceptor;
    tcp::endpoint endpoint; // never changes once listening
    boost::asio::steady_timer acceptRetry;
    boost::asio::steady_timer sweep;
    std::unordered_set<std::shared_ptr<ModbusConnection>> connections;
    std::atomic<uint64> maxClients; // the limits apply to what happens next; no order is promised
    std::atomic<uint64> idleTimeoutUsec;
    wThread thread; // last: it uses all of the above
};

ModbusServer::ModbusServer(IRegisterModel& registerModel, ServerCounters& serverCounters,
                           std::function<void(uint64)> whenClientsChanged)
    : model(registerModel), counters(serverCounters), clientsChanged(std::move(whenClientsChanged))
{
}

ModbusServer::~ModbusServer()
{
    Stop();
}

void ModbusServer::Start(Settings const& settings)
{
    if (core != nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    core = std::make_unique<Core>(*this, settings);
}

void ModbusServer::Stop() noexcept
{
    core.reset();
}

void ModbusServer::SetLimits(uint64 maxClients, uint64 idleTimeoutUsec)
{
    if (core != nullptr)
    {
        core->SetLimits(maxClients, idleTimeoutUsec);
    }
}

std::string ModbusServer::Endpoint() const
{
    return core != nullptr ? EndpointText(core->Endpoint().address().to_string(), core->Endpoint().port())
                           : std::string();
}

uint16 ModbusServer::Port() const
{
    return core != nullptr ? core->Endpoint().port() : uint16{0};
}

} // namespace ModbusTcp
