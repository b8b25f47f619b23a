#include "Host/Http/HttpServer.h"

#include "Host/Http/Descriptor.h"
#include "Host/Http/HttpConnection.h"
#include "Host/Http/IHttpService.h"
#include "Host/Http/IIoUser.h"
#include "Host/Http/IoLoop.h"
#include "Host/Http/UnsentAnswers.h"
#include "Host/Http/WorkerPool.h"
#include "ZuApi/Guard.h"
#include "ZuRest/HttpStatus.h"
#include "wApi/wTime.h"

#include <utility> // Asio of this version relies on it and does not include it

#include <boost/asio/ip/tcp.hpp>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <ctime>
#include <future>
#include <mutex>
#include <netinet/tcp.h>
#include <optional>
#include <sys/socket.h>
#include <unordered_set>
#include <vector>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;
using boost::asio::ip::tcp;
using Outcome = ZuRest::ResourceRequestProcessor::Outcome;

namespace
{

constexpr uint64 ACCEPT_RETRY_USEC = 100'000;
constexpr uint64 MAX_REFUSED = 64; // connections beyond the cap that are told so; more are closed at once

std::string EndpointText(std::string const& address, uint16 port)
{
    bool const isVersion6 = address.find(':') != std::string::npos;
    return (isVersion6 ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

int32 StatusOf(int error)
{
    if (error == EADDRINUSE)
    {
        return Zu::Status::BUSY;
    }
    return error == EADDRNOTAVAIL ? Zu::Status::BAD_ARGUMENT : Zu::Status::FAILURE;
}

/// The present time as "Sun, 06 Nov 1994 08:49:37 GMT".
std::string DateText()
{
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%a, %d %b %Y %H:%M:%S GMT",
                  &parts); // in the "C" locale: nobody sets another
    return text.data();
}

/// The address that the settings name. Throws -997 for one that is none, or may not be used without a token.
boost::asio::ip::address AddressOf(HttpServer::Settings const& settings)
{
    std::string const where = EndpointText(settings.address, settings.port);
    boost::system::error_code error;
    auto const address = boost::asio::ip::make_address(settings.address, error);
    if (error)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The REST service cannot listen on %s: the address is not an IP address",
                 where.c_str());
    }
    if (!address.is_loopback() && settings.token.empty())
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "The REST service listens on %s only with a token: give one with --token FILE, or take 127.0.0.1:%u",
                 where.c_str(), unsigned{settings.port});
    }
    return address;
}

/// A socket that listens where the settings say. Throws as `HttpServer::Listen` does.
Descriptor ListeningSocket(HttpServer::Settings const& settings)
{
    int const enable = 1;
    tcp::endpoint const wanted(AddressOf(settings), settings.port);
    Descriptor made(socket(wanted.protocol().family(), SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, IPPROTO_TCP));
    bool const isListening = made.Number() != Descriptor::NONE &&
                             setsockopt(made.Number(), SOL_SOCKET, SO_REUSEADDR, &enable, sizeof(enable)) == 0 &&
                             bind(made.Number(), wanted.data(), static_cast<socklen_t>(wanted.size())) == 0 &&
                             listen(made.Number(), SOMAXCONN) == 0;
    if (!isListening)
    {
        int const error = errno;
        ZU_THROW(StatusOf(error), "The REST service cannot listen on %s: %s",
                 EndpointText(settings.address, settings.port).c_str(), std::strerror(error));
    }
    return made;
}

/// Where a socket listens.
tcp::endpoint EndpointOf(Descriptor const& listening)
{
    tcp::endpoint endpoint;
    auto bytes = static_cast<socklen_t>(endpoint.capacity());
    if (getsockname(listening.Number(), endpoint.data(), &bytes) != 0)
    {
        ZU_THROW(Zu::Status::FAILURE, "The REST service cannot tell where it listens: %s", std::strerror(errno));
    }
    endpoint.resize(bytes);
    return endpoint;
}

bool IsRead(std::string const& method)
{
    return method == "GET" || method == "HEAD";
}

} // namespace

/// What lives from taking the address to the next stop. All but the count of requests belongs to the thread on I/O duty once it
/// runs.
class HttpServer::Core final : public IHttpService, private IIoUser
{
public:
    Core(ZuRest::ResourceRequestProcessor& usedProcessor, Settings const& usedSettings);
    ~Core() override;

    Core(Core const&) = delete;
    Core& operator=(Core const&) = delete;

    tcp::endpoint const& Endpoint() const
    {
        return endpoint;
    }

    bool IsServing() const;
    void Serve(); ///< once

    // What the connections need.
    Settings const& Limits() const override;
    bool IsLocal() const override;
    std::string const& Date() const override;
    uint64 NowUsec() const override;
    bool IsStopping() const override;
    void Process(std::shared_ptr<HttpConnection> const& client, ZuRest::Request request) override;
    void SendSoon(std::shared_ptr<HttpConnection> const& client) override;
    void RunLater(std::function<void()> step) override;
    void Post(std::function<void()> step) override;
    void Forget(std::shared_ptr<HttpConnection> const& connection) override;

private:
    using Client = std::shared_ptr<HttpConnection>;

    void DoDuty();
    void OnReady(uint32 events) override;
    void RetryAccept();
    void Welcome(Descriptor socket);
    void Sweep();
    void BeginStop();
    void CloseAll();
    void OnIoThread(std::function<void()> step);
    std::optional<Outcome> ProcessHere(Client const& client, ZuRest::Request const& request);
    std::optional<Outcome> ProcessAside(Client const& client, ZuRest::Request const& request);
    void ProcessLater(Client const& client, ZuRest::Request request);
    void GiveOutcome(Client const& client, Outcome outcome);
    void CountBegun();
    void CountEnded();

    Settings const settings;
    ZuRest::ResourceRequestProcessor& processor;
    Descriptor listening;
    tcp::endpoint const endpoint;
    IoLoop loop;
    bool isStopping = false;
    uint64 acceptAgainUsec = wTIMEOUT_INFINITE;
    uint64 nextSweepUsec = 0;
    std::unordered_set<Client> connections;
    UnsentAnswers<Client> unsent;
    std::string date = DateText();

    std::mutex countLock; // a leaf: guards the two below
    std::condition_variable countChanged;
    uint64 underWay = 0; // requests that the processor has
    bool isEmpty = true; // no connection is left

    std::optional<WorkerPool> workers; // last: its threads use all of the above. Of the owner
};

HttpServer::Core::Core(ZuRest::ResourceRequestProcessor& usedProcessor, Settings const& usedSettings)
    : settings(usedSettings),
      processor(usedProcessor),
      listening(ListeningSocket(settings)),
      endpoint(EndpointOf(listening))
{
}

HttpServer::Core::~Core()
{
    ZU_GUARD_DESTRUCTOR([this] {
        if (!IsServing())
        {
            return; // it has only listened
        }
        OnIoThread([this] { BeginStop(); });
        {
            std::unique_lock guard(countLock);
            countChanged.wait_for(guard, std::chrono::microseconds(settings.stopPatienceUsec),
                                  [this] { return isEmpty; });
        }
        OnIoThread([this] { CloseAll(); });
        {
            std::unique_lock guard(countLock);
            countChanged.wait(guard, [this] { return underWay == 0; });
        }
        OnIoThread([] {}); // behind the last outcome: its stream is on the way to the workers
        workers.reset();
    });
}

bool HttpServer::Core::IsServing() const
{
    return workers.has_value();
}

void HttpServer::Core::Serve()
{
    loop.Watch(listening.Number(), EPOLLIN, *this);
    workers.emplace(WorkerPool::Duty{[this] { DoDuty(); }, [this] { loop.Post([] {}); }});
    try
    {
        workers->Start();
    }
    catch (...)
    {
        workers.reset();
        throw;
    }
}

HttpServer::Settings const& HttpServer::Core::Limits() const
{
    return settings;
}

bool HttpServer::Core::IsLocal() const
{
    return endpoint.address().is_loopback();
}

std::string const& HttpServer::Core::Date() const
{
    return date;
}

uint64 HttpServer::Core::NowUsec() const
{
    return loop.NowUsec();
}

bool HttpServer::Core::IsStopping() const
{
    return isStopping;
}

void HttpServer::Core::Process(Client const& client, ZuRest::Request request)
{
    CountBegun();
    std::optional<Outcome> outcome;
    try
    {
        outcome = ProcessHere(client, request);
        if (!outcome.has_value())
        {
            ProcessLater(client, std::move(request));
            return;
        }
    }
    catch (...)
    {
        CountEnded();
        throw;
    }
    GiveOutcome(client, std::move(*outcome));
}

/// Nothing for a request that has to wait for its turn or had better be carried out by another thread: a change takes as long
/// as it takes, a read hardly ever. What waits for nobody is answered in any case, also while reads hold up every worker.
std::optional<Outcome> HttpServer::Core::ProcessHere(Client const& client, ZuRest::Request const& request)
{
    if (!IsRead(request.method))
    {
        return std::nullopt;
    }
    std::optional<Outcome> outcome = ProcessAside(client, request);
    return outcome.has_value() ? std::move(outcome) : processor.ProcessPrompt(request);
}

std::optional<Outcome> HttpServer::Core::ProcessAside(Client const& client, ZuRest::Request const& request)
{
    WorkerPool::Aside const aside(*workers);
    if (!aside.IsGranted())
    {
        return std::nullopt;
    }
    return processor.TryProcess(
        request, [&client](bool isState) -> ZuRest::IStreamReceiver& { return client->MakeReceiver(isState); });
}

void HttpServer::Core::ProcessLater(Client const& client, ZuRest::Request request)
{
    processor.ProcessLater(
        std::move(request),
        [client](bool isState) -> ZuRest::IStreamReceiver& { return client->MakeReceiver(isState); },
        [this](auto next) { workers->Run(std::move(next)); },
        [this, client](Outcome outcome) { GiveOutcome(client, std::move(outcome)); });
}

void HttpServer::Core::GiveOutcome(Client const& client, Outcome outcome)
{
    if (workers->IsOnDuty())
    {
        CountEnded();
        client->TakeOutcome(std::move(outcome));
        return;
    }
    auto const kept = std::make_shared<Outcome>(std::move(outcome));
    loop.Post([client, kept] { client->TakeOutcome(std::move(*kept)); });
    CountEnded(); // last: the one who waits may end this object right behind it
}

void HttpServer::Core::CountBegun()
{
    std::scoped_lock const guard(countLock);
    ++underWay;
}

void HttpServer::Core::CountEnded()
{
    std::scoped_lock const guard(countLock);
    --underWay;
    countChanged.notify_all(); // under the lock: the one who waits may end this object right behind it
}

void HttpServer::Core::SendSoon(Client const& client)
{
    if (!unsent.Keep(client, loop.HasReady(), wTime_NowUsec()))
    {
        client->SendNow();
    }
}

void HttpServer::Core::RunLater(std::function<void()> step)
{
    workers->Run(std::move(step));
}

void HttpServer::Core::Post(std::function<void()> step)
{
    loop.Post(std::move(step));
}

void HttpServer::Core::Forget(Client const& connection)
{
    loop.Post([kept = connection] {}); // it may be about to be called still
    connections.erase(connection);
    if (connections.empty())
    {
        std::scoped_lock const guard(countLock);
        isEmpty = true;
        countChanged.notify_all();
    }
}

/// One piece of the I/O. Behind `RunOne` nothing is touched: this thread may be relieved.
void HttpServer::Core::DoDuty()
{
    if (!unsent.IsEmpty() && unsent.IsDue(loop.HasReady(), wTime_NowUsec()))
    {
        unsent.Take()->SendNow();
        return;
    }
    uint64 const nowUsec = loop.NowUsec();
    if (nowUsec >= acceptAgainUsec && !isStopping)
    {
        acceptAgainUsec = wTIMEOUT_INFINITE;
        loop.Change(listening.Number(), EPOLLIN, *this);
    }
    if (nowUsec >= nextSweepUsec)
    {
        Sweep();
    }
    loop.RunOne(std::min(nextSweepUsec, acceptAgainUsec));
}

/// A client is at the door, or more of them: the others make themselves heard again.
void HttpServer::Core::OnReady(uint32 /*events*/)
{
    if (isStopping)
    {
        return; // it was there when the door was closed
    }
    Descriptor socket(accept4(listening.Number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (socket.Number() != Descriptor::NONE)
    {
        Welcome(std::move(socket));
    }
    else if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM)
    {
        RetryAccept();
    }
}

/// Trying again at once would only burn time that the clients need.
void HttpServer::Core::RetryAccept()
{
    loop.Change(listening.Number(), 0, *this);
    acceptAgainUsec = loop.NowUsec() + ACCEPT_RETRY_USEC;
}

void HttpServer::Core::Welcome(Descriptor socket)
{
    uint64 const present = connections.size();
    if (present >= settings.maxConnections + MAX_REFUSED)
    {
        return; // the socket closes as it goes
    }
    int const number = socket.Number();
    int const enable = 1;
    setsockopt(number, IPPROTO_TCP, TCP_NODELAY, &enable, sizeof(enable)); // without it answers are only slower
    auto const connection = HttpConnection::Make(*this, std::move(socket));
    loop.Watch(number, EPOLLIN | EPOLLOUT | EPOLLRDHUP | EPOLLET, *connection);
    connections.insert(connection);
    {
        std::scoped_lock const guard(countLock);
        isEmpty = false;
    }
    if (present < settings.maxConnections)
    {
        connection->Begin();
        return;
    }
    connection->Refuse(HttpStatus::SERVICE_UNAVAILABLE, Zu::Status::BUSY,
                       "The service has " + std::to_string(settings.maxConnections) + " connections already.");
}

/// One timer looks after the deadlines of all: no client costs a timer of its own with each request.
void HttpServer::Core::Sweep()
{
    std::vector<Client> const all(connections.begin(), connections.end());
    uint64 const nowUsec = loop.NowUsec();
    nextSweepUsec = nowUsec + settings.sweepPeriodUsec;
    date = DateText();                 // often enough, and not with each answer
    for (auto const& connection : all) // a copy: one that ends leaves the set
    {
        ZU_GUARD_BOUNDARY([&] { connection->CheckDeadline(nowUsec); });
    }
}

void HttpServer::Core::BeginStop()
{
    isStopping = true;
    listening.Close();
    std::vector<Client> const all(connections.begin(), connections.end());
    for (auto const& connection : all)
    {
        connection->BeginStop();
    }
}

void HttpServer::Core::CloseAll()
{
    std::vector<Client> const all(connections.begin(), connections.end());
    for (auto const& connection : all)
    {
        connection->Close();
    }
}

/// Runs `step` on the I/O thread, behind what is there already, and waits for it.
void HttpServer::Core::OnIoThread(std::function<void()> step)
{
    std::promise<void> ran;
    loop.Post([&] {
        ZU_GUARD_BOUNDARY(step);
        ran.set_value();
    });
    ran.get_future().wait();
}

HttpServer::HttpServer(ZuRest::ResourceRequestProcessor& usedProcessor) : processor(usedProcessor)
{
}

HttpServer::~HttpServer()
{
    Stop();
}

void HttpServer::Check(Settings const& settings)
{
    AddressOf(settings);
}

void HttpServer::Listen(Settings const& settings)
{
    if (core != nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    core = std::make_unique<Core>(processor, settings);
}

void HttpServer::Start()
{
    if (core == nullptr || core->IsServing())
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    core->Serve();
}

void HttpServer::Stop() noexcept
{
    core.reset();
}

std::string HttpServer::Endpoint() const
{
    return core != nullptr ? EndpointText(core->Endpoint().address().to_string(), core->Endpoint().port())
                           : std::string();
}

uint16 HttpServer::Port() const
{
    return core != nullptr ? core->Endpoint().port() : uint16{0};
}

} // namespace ZuHost
