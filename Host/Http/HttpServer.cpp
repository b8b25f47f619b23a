#include "Host/Http/HttpServer.h"

#include "Host/Http/BearerToken.h"
#include "Host/Http/ByteBudget.h"
#include "Host/Http/ClientSource.h"
#include "Host/Http/ConnectionTable.h"
#include "Host/Http/HttpSession.h"
#include "Host/Http/RequestQueue.h"
#include "Host/Http/WrongTokens.h"
#include "ZuApi/Guard.h"
#include "ZuRest/Problem.h"
#include "wApi/wThread.h"
#include "wApi/wTime.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/beast/core/basic_stream.hpp>
#include <boost/system/system_error.hpp>

#include <array>
#include <chrono>
#include <optional>

namespace ZuHost
{

namespace asio = boost::asio;
namespace HttpStatus = ZuRest::HttpStatus;
using asio::ip::tcp;
using boost::system::error_code;
using Outcome = ZuRest::ResourceRequestProcessor::Outcome;

namespace
{

using Clock = std::chrono::steady_clock;
using Strand = HttpConnection::Strand;
using Socket = asio::basic_stream_socket<tcp, Strand>;
using TcpStream = boost::beast::basic_stream<tcp, Strand>;

constexpr std::chrono::milliseconds ACCEPT_RETRY{100};
constexpr uint64 MAX_REFUSED =
    64; // connections beyond the limit that are answered 503; further ones are closed at once

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

/// The address in the settings. Throws as `HttpServer::Check` does.
asio::ip::address AddressOf(HttpServer::Settings const& settings)
{
    std::string const where = EndpointText(settings.address, settings.port);
    error_code error;
    auto const address = asio::ip::make_address(settings.address, error);
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

/// The listener, the connections and the threads, from `Listen` to the next stop.
///
/// The acceptor and its timer belong to the strand once the threads run.
class HttpServer::Core final : public IHttpService
{
public:
    Core(ZuRest::ResourceRequestProcessor& usedProcessor, WrongTokens& usedTokens, Settings const& usedSettings);
    ~Core() override;

    Core(Core const&) = delete;
    Core& operator=(Core const&) = delete;

    tcp::endpoint const& Endpoint() const
    {
        return endpoint;
    }

    bool IsServing() const
    {
        return keepsRunning.has_value();
    }

    void Serve(); ///< once

    Settings const& Limits() const override
    {
        return settings;
    }

    CurrentToken const& Token() const override
    {
        return token;
    }

    void SetToken(std::string newToken)
    {
        token.Set(std::move(newToken));
    }

    bool IsLocal() const override
    {
        return endpoint.address().is_loopback();
    }

    ByteBudget& Budget() override
    {
        return budget;
    }

    uint64 NoteWrongToken(asio::ip::address const& source) override
    {
        return wrongTokens.Note(source, wTime_NowUsec());
    }

    void Process(std::shared_ptr<HttpConnection> const& client, ZuRest::Request request) override;

    void RunLater(std::function<void()> step) override
    {
        requests.Run(std::move(step));
    }

    void Forget(HttpConnection& connection) noexcept override;

private:
    using Client = std::shared_ptr<HttpConnection>;
    using WorkGuard = asio::executor_work_guard<asio::io_context::executor_type>;

    static int RunThread(void* argument);

    tcp::endpoint Listen();
    void Accept();
    void OnAccept(error_code const& error, Socket socket);
    void RetryAccept();
    void Welcome(Socket socket);
    bool MakeRoom();
    void BeginStop();
    void ForEach(void (HttpConnection::*step)());
    void EndThreads() noexcept;

    Settings const settings;
    CurrentToken token{settings.token};
    ZuRest::ResourceRequestProcessor& processor;
    WrongTokens& wrongTokens;
    ByteBudget budget{MAX_BYTES_IN_ALL};

    ConnectionTable connections;

    asio::io_context context{static_cast<int>(THREADS)}; // behind the connections: its handlers share them
    RequestQueue requests{context, THREADS - 1};
    Strand strand{asio::make_strand(context)};
    asio::basic_socket_acceptor<tcp, Strand> acceptor{strand};
    asio::basic_waitable_timer<Clock, asio::wait_traits<Clock>, Strand> acceptRetry{strand};
    tcp::endpoint const endpoint;

    std::optional<WorkGuard> keepsRunning; // from `Serve` on. Of the owner, as the two below
    std::array<wThread, THREADS> threads;
    uint64 started = 0;
};

HttpServer::Core::Core(ZuRest::ResourceRequestProcessor& usedProcessor, WrongTokens& usedTokens,
                       Settings const& usedSettings)
    : settings(usedSettings), processor(usedProcessor), wrongTokens(usedTokens), endpoint(Listen())
{
}

HttpServer::Core::~Core()
{
    if (!IsServing())
    {
        return; // the server has listened, but was not started
    }
    while (!ZU_GUARD_DESTRUCTOR([this] { // repeated until there is enough memory
        boost::asio::post(strand, [this] { BeginStop(); });
        connections.WaitUntilEmpty(settings.stopPatienceUsec); // running requests may end
        ForEach(&HttpConnection::Close);
    }))
    {
    }
    EndThreads();
}

/// Returns the bound address.
tcp::endpoint HttpServer::Core::Listen()
{
    tcp::endpoint const wanted(AddressOf(settings), settings.port);
    try
    {
        acceptor.open(wanted.protocol());
        acceptor.set_option(tcp::acceptor::reuse_address(true)); // connections of the previous run may still be closing
        acceptor.bind(wanted);
        acceptor.listen();
        return acceptor.local_endpoint();
    }
    catch (boost::system::system_error const& error)
    {
        ZU_THROW(StatusOf(error.code()), "The REST service cannot listen on %s: %s",
                 EndpointText(settings.address, settings.port).c_str(), error.code().message().c_str());
    }
}

void HttpServer::Core::Serve()
{
    keepsRunning.emplace(context.get_executor());
    try
    {
        for (; started < THREADS; ++started)
        {
            wThread& thread = threads[started];
            ZU_CHECK(wThread_Construct(&thread));
            ZU_CHECK(wThread_SetName(thread, ("Http.Worker" + std::to_string(started)).c_str()));
            ZU_CHECK(wThread_Start(thread, &Core::RunThread, &context));
        }
        asio::post(strand, [this] { Accept(); });
    }
    catch (...)
    {
        EndThreads();
        context.restart();
        throw;
    }
}

int HttpServer::Core::RunThread(void* argument)
{
    auto& context = *static_cast<asio::io_context*>(argument);
    while (!ZU_GUARD_BOUNDARY([&context] { context.run(); })) // returns when nothing is pending any more
    {
    }
    return 1;
}

void HttpServer::Core::EndThreads() noexcept
{
    keepsRunning.reset();
    while (started != 0)
    {
        --started;
        ZU_GUARD_DESTRUCTOR([this] { ZU_CHECK(wThread_Join(threads[started], wTIMEOUT_INFINITE, nullptr)); });
    }
}

void HttpServer::Core::Accept()
{
    acceptor.async_accept(asio::make_strand(context),
                          [this](error_code const& error, Socket socket) { OnAccept(error, std::move(socket)); });
}

void HttpServer::Core::OnAccept(error_code const& error, Socket socket)
{
    if (!acceptor.is_open())
    {
        return; // the server stops
    }
    bool const isDone = !error && ZU_GUARD_BOUNDARY([this, &socket] {
        Welcome(std::move(socket));
        Accept();
    });
    if (!isDone)
    {
        RetryAccept();
    }
}

/// Waits before the next attempt, which would fail at once too: the system has no descriptor or memory left.
void HttpServer::Core::RetryAccept()
{
    acceptRetry.expires_after(ACCEPT_RETRY);
    acceptRetry.async_wait([this](error_code const& error) {
        if (!error && acceptor.is_open())
        {
            Accept();
        }
    });
}

void HttpServer::Core::Welcome(Socket socket)
{
    error_code ignored; // without this option answers are slower, but correct
    socket.set_option(tcp::no_delay(true), ignored);
    asio::ip::address source = ClientSource(socket.remote_endpoint(ignored).address());
    auto const connection =
        std::make_shared<HttpSession<TcpStream>>(*this, TcpStream(std::move(socket)), std::move(source));
    uint64 const others = connections.Add(connection);
    bool const isBeyondAll = others >= settings.maxConnections + MAX_REFUSED;
    if (others < settings.maxConnections || (!isBeyondAll && MakeRoom()))
    {
        connection->Start(std::nullopt);
    }
    else if (!isBeyondAll)
    {
        std::string const limit = std::to_string(settings.maxConnections);
        connection->Start(ZuRest::Problem{
            HttpStatus::SERVICE_UNAVAILABLE,
            "The service has " + limit + " connections already.",
            Zu::Status::BUSY,
            {}}.ToAnswer());
    }
}

/// Closes an idle connection. Returns false if there is none.
bool HttpServer::Core::MakeRoom()
{
    Client const idle = connections.TakeLongestIdle();
    if (idle != nullptr)
    {
        idle->CloseIfIdle();
    }
    return idle != nullptr;
}

void HttpServer::Core::Process(Client const& client, ZuRest::Request request)
{
    if (std::optional<Outcome> outcome = processor.ProcessPrompt(request); outcome.has_value())
    {
        client->TakeOutcome(std::move(*outcome));
        return;
    }
    processor.ProcessLater(
        std::move(request),
        [client](bool isState) -> ZuRest::IStreamReceiver& { return client->MakeReceiver(isState); },
        [this](auto work) { requests.Run(std::move(work)); },
        [client, pending = WorkGuard(context.get_executor())](Outcome outcome) { // keeps the threads running
            client->TakeOutcome(std::move(outcome));
        });
}

void HttpServer::Core::Forget(HttpConnection& connection) noexcept
{
    connections.Remove(connection);
}

void HttpServer::Core::BeginStop()
{
    error_code ignored;
    acceptor.close(ignored);
    acceptRetry.cancel();
    connections.EndAdding();
    ForEach(&HttpConnection::BeginStop);
}

void HttpServer::Core::ForEach(void (HttpConnection::*step)())
{
    for (Client const& client : connections.All())
    {
        ((*client).*step)();
    }
}

HttpServer::HttpServer(ZuRest::ResourceRequestProcessor& usedProcessor)
    : processor(usedProcessor), wrongTokens(std::make_unique<WrongTokens>())
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
    core = std::make_unique<Core>(processor, *wrongTokens, settings);
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

void HttpServer::SetToken(std::string token)
{
    if (core != nullptr)
    {
        core->SetToken(std::move(token));
    }
}

std::string HttpServer::Endpoint() const
{
    return core != nullptr ? EndpointText(core->Endpoint().address().to_string(), core->Endpoint().port())
                           : std::string();
}

uint64 HttpServer::WrongTokenCount() const
{
    return wrongTokens->Count();
}

uint16 HttpServer::Port() const
{
    return core != nullptr ? core->Endpoint().port() : uint16{0};
}

} // namespace ZuHost
