#include "Host/Http/HttpServer.h"

#include "Host/Http/HttpConnection.h"
#include "Host/Http/IHttpService.h"
#include "Host/Http/WorkerPool.h"
#include "ZuApi/Guard.h"
#include "ZuRest/HttpStatus.h"
#include "wApi/wThread.h"
#include "wApi/wTime.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <condition_variable>
#include <ctime>
#include <future>
#include <mutex>
#include <optional>
#include <unordered_set>
#include <vector>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;
using boost::asio::ip::tcp;
using boost::system::error_code;
using Outcome = ZuRest::ResourceRequestProcessor::Outcome;

namespace
{

constexpr std::chrono::milliseconds ACCEPT_RETRY{100};
constexpr uint64 MAX_REFUSED = 64; // connections beyond the cap that are told so; more are closed at once

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
    error_code error;
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

} // namespace

/// What lives from taking the address to the next stop. All but the counts of requests belongs to the I/O thread once it runs.
class HttpServer::Core final : public IHttpService
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

    // What the connections need, on the I/O thread.
    Settings const& Limits() const override;
    bool IsLocal() const override;
    std::string const& Date() const override;
    bool IsStopping() const override;
    void Process(ZuRest::Request request, ZuRest::ResourceRequestProcessor::ReceiverMaker makeReceiver,
                 std::function<void(Outcome)> done) override;
    void RunLater(std::function<void()> step) override;
    void Forget(std::shared_ptr<HttpConnection> const& connection) override;

private:
    using WorkGuard = boost::asio::executor_work_guard<boost::asio::io_context::executor_type>;

    static int Main(void* argument);

    void Listen();
    void Accept();
    void RetryAccept();
    void Welcome(tcp::socket socket);
    void Sweep();
    void BeginStop();
    void CloseAll();
    void OnIoThread(std::function<void()> step);

    Settings const settings;
    ZuRest::ResourceRequestProcessor& processor;
    boost::asio::io_context io{1}; // one thread: it needs fewer locks
    bool isServing = false;        // the owner's: whether there is a thread
    bool isStopping = false;
    bool isClosed = false; // nothing begins any more
    std::optional<WorkerPool> workers;
    std::optional<WorkGuard> work{boost::asio::make_work_guard(io)};
    tcp::acceptor acceptor{io};
    tcp::endpoint endpoint; // never changes once listening
    boost::asio::steady_timer acceptRetry{io};
    boost::asio::steady_timer sweep{io};
    std::unordered_set<std::shared_ptr<HttpConnection>> connections;
    std::string date = DateText();

    std::mutex countLock; // a leaf: guards the two below
    std::condition_variable countChanged;
    uint64 underWay = 0; // requests that the processor has
    bool isEmpty = true; // no connection is left

    wThread thread; // last: it uses all of the above
};

HttpServer::Core::Core(ZuRest::ResourceRequestProcessor& usedProcessor, Settings const& usedSettings)
    : settings(usedSettings), processor(usedProcessor)
{
    Listen();
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "Http.Io"));
}

HttpServer::Core::~Core()
{
    ZU_GUARD_DESTRUCTOR([this] {
        if (!isServing)
        {
            return; // it has only listened
        }
        OnIoThread([this] { BeginStop(); });
        {
            std::unique_lock guard(countLock);
            auto const deadline =
                std::chrono::system_clock::now() + std::chrono::microseconds(settings.stopPatienceUsec);
            countChanged.wait_until(guard, deadline, [this] { return isEmpty; });
        }
        OnIoThread([this] { CloseAll(); });
        {
            std::unique_lock guard(countLock);
            countChanged.wait(guard, [this] { return underWay == 0; });
        }
        OnIoThread([] {}); // behind the last outcome: its stream is on the way to the workers
        workers.reset();
        work.reset();
        ZU_CHECK(wThread_Join(thread, wTIMEOUT_INFINITE, nullptr));
    });
}

bool HttpServer::Core::IsServing() const
{
    return isServing;
}

void HttpServer::Core::Serve()
{
    workers.emplace();
    Accept();
    Sweep();
    ZU_CHECK(wThread_Start(thread, &Core::Main, this)); // behind all that the thread uses
    isServing = true;
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

bool HttpServer::Core::IsStopping() const
{
    return isStopping;
}

void HttpServer::Core::Process(ZuRest::Request request, ZuRest::ResourceRequestProcessor::ReceiverMaker makeReceiver,
                               std::function<void(Outcome)> done)
{
    {
        std::scoped_lock const guard(countLock);
        ++underWay;
    }
    processor.ProcessLater(
        std::move(request), std::move(makeReceiver), [this](auto next) { workers->Run(std::move(next)); },
        [this, done = std::move(done)](Outcome outcome) {
        auto const kept = std::make_shared<Outcome>(std::move(outcome));
        boost::asio::post(io, [done, kept] { done(std::move(*kept)); });
        std::scoped_lock const guard(countLock);
        --underWay;
        countChanged.notify_all(); // under the lock: the one who waits may end this object right behind it
        });
}

void HttpServer::Core::RunLater(std::function<void()> step)
{
    workers->Run(std::move(step));
}

void HttpServer::Core::Forget(std::shared_ptr<HttpConnection> const& connection)
{
    connections.erase(connection);
    if (connections.empty())
    {
        std::scoped_lock const guard(countLock);
        isEmpty = true;
        countChanged.notify_all();
    }
}

int HttpServer::Core::Main(void* argument)
{
    auto& core = *static_cast<Core*>(argument);
    while (!ZU_GUARD_BOUNDARY([&core] { core.io.run(); })) // ends when all is closed
    {
    }
    return 1;
}

void HttpServer::Core::Listen()
{
    tcp::endpoint const wanted(AddressOf(settings), settings.port);
    error_code error;
    acceptor.open(wanted.protocol(), error);
    error = error ? error : (acceptor.set_option(tcp::acceptor::reuse_address(true), error), error);
    error = error ? error : (acceptor.bind(wanted, error), error);
    error = error ? error : (acceptor.listen(tcp::acceptor::max_listen_connections, error), error);
    if (error)
    {
        ZU_THROW(StatusOf(error), "The REST service cannot listen on %s: %s",
                 EndpointText(settings.address, settings.port).c_str(), error.message().c_str());
    }
    endpoint = acceptor.local_endpoint();
}

void HttpServer::Core::Accept()
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
void HttpServer::Core::RetryAccept()
{
    acceptRetry.expires_after(ACCEPT_RETRY);
    acceptRetry.async_wait([this](error_code const&) {
        if (acceptor.is_open())
        {
            Accept();
        }
    });
}

void HttpServer::Core::Welcome(tcp::socket socket)
{
    uint64 const present = connections.size();
    if (present >= settings.maxConnections + MAX_REFUSED)
    {
        return; // the socket closes as it goes
    }
    error_code ignored; // without it answers are only slower
    socket.set_option(tcp::no_delay(true), ignored);
    auto const connection = HttpConnection::Make(*this, std::move(socket));
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
    std::vector<std::shared_ptr<HttpConnection>> const all(connections.begin(), connections.end());
    uint64 const nowUsec = wTime_NowUsec();
    date = DateText();                 // often enough, and not with each answer
    for (auto const& connection : all) // a copy: one that ends leaves the set
    {
        ZU_GUARD_BOUNDARY([&] { connection->CheckDeadline(nowUsec); });
    }
    sweep.expires_after(std::chrono::microseconds(settings.sweepPeriodUsec));
    sweep.async_wait([this](error_code const& error) {
        if (!error && !isClosed) // one that has expired already is not cancelled any more
        {
            Sweep();
        }
    });
}

void HttpServer::Core::BeginStop()
{
    isStopping = true;
    error_code ignored;
    acceptor.close(ignored);
    acceptRetry.cancel();
    std::vector<std::shared_ptr<HttpConnection>> const all(connections.begin(), connections.end());
    for (auto const& connection : all)
    {
        connection->BeginStop();
    }
}

void HttpServer::Core::CloseAll()
{
    isClosed = true;
    sweep.cancel();
    std::vector<std::shared_ptr<HttpConnection>> const all(connections.begin(), connections.end());
    for (auto const& connection : all)
    {
        connection->Close();
    }
}

/// Runs `step` on the I/O thread, behind what is there already, and waits for it.
void HttpServer::Core::OnIoThread(std::function<void()> step)
{
    std::promise<void> ran;
    boost::asio::post(io, [&] {
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
