#include "Host/Http/HttpServer.h"

#include "Host/Http/ByteBudget.h"
#include "Host/Http/ClientSource.h"
#include "Host/Http/ConnectionTable.h"
#include "Host/Http/HandshakeFaults.h"
#include "Host/Http/HttpListener.h"
#include "Host/Http/HttpSession.h"
#include "Host/Http/IGatekeeper.h"
#include "Host/Http/RequestQueue.h"
#include "Host/Http/TlsSession.h"
#include "Host/Http/WrongTokens.h"
#include "ZuApi/Guard.h"
#include "ZuRest/Problem.h"
#include "ZuTls/Context.h"
#include "wApi/wMutex.h"
#include "wApi/wThread.h"
#include "wApi/wTime.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
#include <openssl/ssl.h>

#include <array>
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

using Strand = HttpConnection::Strand;
using Socket = HttpListener::Socket;
using TcpStream = TlsSession::TcpStream;
using TlsContext = std::shared_ptr<asio::ssl::context>;

constexpr uint64 MAX_REFUSED =
    64; // connections beyond the limit that are answered 503; further ones are closed at once

asio::ip::address ParseAddress(std::string const& text, uint16 port)
{
    error_code error;
    auto const address = asio::ip::make_address(text, error);
    if (error)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "The REST service cannot listen on %s: the address is not an IP address",
                 HttpListener::TextOf(text, port).c_str());
    }
    return address;
}

/// The address of the listener for HTTP. Throws as `HttpServer::Check` does.
asio::ip::address PlainAddress(HttpServer::Settings const& settings)
{
    auto const address = ParseAddress(settings.address, settings.port);
    if (!address.is_loopback() && !settings.isInsecure)
    {
        std::string const where = HttpListener::TextOf(settings.address, settings.port);
        ZU_THROW(Zu::Status::BAD_ARGUMENT,
                 "The REST service does not listen on %s without encryption: give --https %s in place of --http, or "
                 "--insecure as well",
                 where.c_str(), where.c_str());
    }
    return address;
}

/// Empty for null.
std::string TextOf(HttpListener const* listener)
{
    return listener == nullptr
               ? std::string()
               : HttpListener::TextOf(listener->Endpoint().address().to_string(), listener->Endpoint().port());
}

/// Asio's view of a context: it shares the inner object of OpenSSL.
TlsContext ShareWithAsio(ZuTls::Context const& tls)
{
    SSL_CTX_up_ref(tls.Native());
    return std::make_shared<asio::ssl::context>(tls.Native());
}

HttpClient ClientOf(Socket& socket, bool isLocal, bool isEncrypted)
{
    error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored); // without this option answers are slower, but correct
    auto const address = socket.remote_endpoint(ignored).address();
    return {ClientSource(address), address, isLocal, isEncrypted};
}

} // namespace

/// The listeners, the connections and the threads, from `Listen` to the next stop.
///
/// The listeners belong to the strand once the threads run.
class HttpServer::Core final : public IHttpService
{
public:
    Core(ZuRest::ResourceRequestProcessor& usedProcessor, IGatekeeper& usedGatekeeper, WrongTokens& usedTokens,
         HandshakeFaults& usedFaults, Settings const& usedSettings);
    ~Core() override;

    Core(Core const&) = delete;
    Core& operator=(Core const&) = delete;

    HttpListener const& Plain() const
    {
        return plain;
    }

    /// Null if there is no HTTPS.
    HttpListener const* Encrypted() const
    {
        return encrypted.has_value() ? &*encrypted : nullptr;
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

    IGatekeeper& Gatekeeper() override
    {
        return gatekeeper;
    }

    void SetTls(ZuTls::Context const& newTls)
    {
        TlsContext shared = ShareWithAsio(newTls);
        Zu::MutexLock const guard(tlsMutex);
        tls.swap(shared);
    }

    ByteBudget& Budget() override
    {
        return budget;
    }

    uint64 NoteWrongToken(asio::ip::address const& source) override
    {
        return wrongTokens.Note(source, wTime_NowUsec());
    }

    void NoteHandshakeFault(asio::ip::address const& source, std::string const& reason) override
    {
        handshakeFaults.Note(source.to_string(), reason, wTime_NowUsec());
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

    TlsContext Tls() const;
    void WelcomePlain(Socket socket);
    void WelcomeEncrypted(Socket socket);
    void Welcome(Client const& connection);
    bool MakeRoom();
    void BeginStop();
    void ForEach(void (HttpConnection::*step)());
    void EndThreads() noexcept;

    Settings const settings;
    ZuRest::ResourceRequestProcessor& processor;
    IGatekeeper& gatekeeper;
    WrongTokens& wrongTokens;
    HandshakeFaults& handshakeFaults;
    ByteBudget budget{MAX_BYTES_IN_ALL};

    ConnectionTable connections;

    asio::io_context context{static_cast<int>(THREADS)}; // behind the connections: its handlers share them
    RequestQueue requests{context, THREADS - 1};
    Strand strand{asio::make_strand(context)};
    mutable Zu::Mutex tlsMutex; // a leaf
    TlsContext tls ZU_GUARDED_BY(tlsMutex);
    HttpListener plain;
    std::optional<HttpListener> encrypted;

    Zu::Subscription const endedCallers{
        gatekeeper.EndedSignal().Subscribe([this] { ForEach(&HttpConnection::ReviewStream); })};

    std::optional<WorkGuard> keepsRunning; // from `Serve` on. Of the owner, as the two below
    std::array<wThread, THREADS> threads;
    uint64 started = 0;
};

HttpServer::Core::Core(ZuRest::ResourceRequestProcessor& usedProcessor, IGatekeeper& usedGatekeeper,
                       WrongTokens& usedTokens, HandshakeFaults& usedFaults, Settings const& usedSettings)
    : settings(usedSettings),
      processor(usedProcessor),
      gatekeeper(usedGatekeeper),
      wrongTokens(usedTokens),
      handshakeFaults(usedFaults),
      plain(context, strand, PlainAddress(settings), settings.port,
            [this](Socket socket) { WelcomePlain(std::move(socket)); })
{
    if (!settings.httpsAddress.empty())
    {
        SetTls(*settings.tls);
        encrypted.emplace(context, strand, ParseAddress(settings.httpsAddress, settings.httpsPort), settings.httpsPort,
                          [this](Socket socket) { WelcomeEncrypted(std::move(socket)); });
    }
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
        asio::post(strand, [this] {
            plain.Accept();
            if (encrypted.has_value())
            {
                encrypted->Accept();
            }
        });
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

TlsContext HttpServer::Core::Tls() const
{
    Zu::MutexLock const guard(tlsMutex);
    return tls;
}

void HttpServer::Core::WelcomePlain(Socket socket)
{
    HttpClient client = ClientOf(socket, plain.IsLocal(), false);
    Welcome(std::make_shared<HttpSession<TcpStream>>(*this, TcpStream(std::move(socket)), std::move(client)));
}

void HttpServer::Core::WelcomeEncrypted(Socket socket)
{
    HttpClient client = ClientOf(socket, encrypted->IsLocal(), true);
    Welcome(std::make_shared<TlsSession>(*this, TcpStream(std::move(socket)), *Tls(), std::move(client)));
}

void HttpServer::Core::Welcome(Client const& connection)
{
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
    plain.Close();
    if (encrypted.has_value())
    {
        encrypted->Close();
    }
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

HttpServer::HttpServer(ZuRest::ResourceRequestProcessor& usedProcessor, IGatekeeper& usedGatekeeper)
    : processor(usedProcessor),
      gatekeeper(usedGatekeeper),
      wrongTokens(std::make_unique<WrongTokens>()),
      handshakeFaults(std::make_unique<HandshakeFaults>())
{
}

HttpServer::~HttpServer()
{
    Stop();
}

void HttpServer::Check(Settings const& settings)
{
    PlainAddress(settings);
    if (!settings.httpsAddress.empty())
    {
        ParseAddress(settings.httpsAddress, settings.httpsPort);
    }
}

void HttpServer::Listen(Settings const& settings)
{
    if (core != nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    core = std::make_unique<Core>(processor, gatekeeper, *wrongTokens, *handshakeFaults, settings);
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

bool HttpServer::IsLocal() const
{
    return IsPlainLocal() && (core->Encrypted() == nullptr || core->Encrypted()->IsLocal());
}

void HttpServer::SetTls(std::shared_ptr<ZuTls::Context const> const& tls)
{
    if (core != nullptr && core->Encrypted() != nullptr)
    {
        core->SetTls(*tls);
    }
}

std::string HttpServer::Endpoint() const
{
    return core != nullptr ? TextOf(&core->Plain()) : std::string();
}

bool HttpServer::IsPlainLocal() const
{
    return core->Plain().IsLocal();
}

std::string HttpServer::EncryptedEndpoint() const
{
    return core != nullptr ? TextOf(core->Encrypted()) : std::string();
}

uint64 HttpServer::WrongTokenCount() const
{
    return wrongTokens->Count();
}

uint16 HttpServer::Port() const
{
    return core != nullptr ? core->Plain().Endpoint().port() : uint16{0};
}

uint16 HttpServer::EncryptedPort() const
{
    return core != nullptr && core->Encrypted() != nullptr ? core->Encrypted()->Endpoint().port() : uint16{0};
}

} // namespace ZuHost
