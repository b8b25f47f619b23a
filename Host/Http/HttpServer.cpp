#include "Host/Http/HttpServer.h"

#include <utility> // Asio of this version relies on it and does not include it

#include "Host/Http/BearerToken.h"
#include "Host/Http/EventBuffer.h"
#include "Host/Http/WorkerPool.h"
#include "ZuApi/Guard.h"
#include "ZuRest/OpenStream.h"
#include "ZuRest/Problem.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "wApi/wThread.h"
#include "wApi/wTime.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>

#include <array>
#include <atomic>
#include <condition_variable>
#include <future>
#include <optional>
#include <unordered_set>
#include <vector>

namespace ZuHost
{

namespace http = boost::beast::http;
namespace HttpStatus = ZuRest::HttpStatus;
using boost::asio::ip::tcp;
using boost::system::error_code;
using ZuRest::Answer;
using Outcome = ZuRest::ResourceRequestProcessor::Outcome;

namespace
{

constexpr std::chrono::milliseconds SWEEP_PERIOD{50};
constexpr std::chrono::milliseconds ACCEPT_RETRY{100};
constexpr uint64 MAX_REFUSED = 64; // connections beyond the cap that are told so; more are closed at once
constexpr uint64 LINGER_USEC = 2'000'000;
constexpr uint64 MAX_LINGER_BYTES = 8 * HttpServer::MAX_BODY_BYTES;

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

std::string TextOf(boost::beast::string_view text)
{
    return {text.data(), text.size()};
}

/// The path and what stands behind it, without the scheme and the host that a proxy may write before them.
std::string PathAndQuery(boost::beast::string_view target)
{
    std::string text = TextOf(target);
    if (text.starts_with("http://"))
    {
        std::size_t const path = text.find('/', 7);
        text = path != std::string::npos ? text.substr(path) : "/";
    }
    return text;
}

Answer Refusal(uint32 status, int32 code, std::string detail)
{
    return ZuRest::Problem{status, std::move(detail), code, {}}.ToAnswer();
}

} // namespace

/// What lives from a start to the next stop. All but the counts of requests belongs to the I/O thread once it runs.
class HttpServer::Core final
{
public:
    Core(ZuRest::ResourceRequestProcessor& usedProcessor, Settings const& usedSettings);
    ~Core();

    Core(Core const&) = delete;
    Core& operator=(Core const&) = delete;

    tcp::endpoint const& Endpoint() const
    {
        return endpoint;
    }

    /// Has the request carried out; `done` gets the outcome on the I/O thread.
    void Process(ZuRest::Request request, ZuRest::ResourceRequestProcessor::ReceiverMaker makeReceiver,
                 std::function<void(Outcome)> done);

    void Forget(std::shared_ptr<Connection> const& connection);

    Settings const settings;
    ZuRest::ResourceRequestProcessor& processor;
    boost::asio::io_context io{1}; // one thread: it needs fewer locks
    bool isStopping = false;
    std::optional<WorkerPool> workers;

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

    std::optional<WorkGuard> work{boost::asio::make_work_guard(io)};
    tcp::acceptor acceptor{io};
    tcp::endpoint endpoint; // never changes once listening
    boost::asio::steady_timer acceptRetry{io};
    boost::asio::steady_timer sweep{io};
    std::unordered_set<std::shared_ptr<Connection>> connections;

    std::mutex countLock; // a leaf: guards the two below
    std::condition_variable countChanged;
    uint64 underWay = 0; // requests that the processor has
    bool isEmpty = true; // no connection is left

    wThread thread; // last: it uses all of the above
};

/// One client, from the accept to the close. It belongs to the I/O thread.
class HttpServer::Connection final : public std::enable_shared_from_this<Connection>
{
public:
    Connection(Core& owner, tcp::socket acceptedSocket) : core(owner), socket(std::move(acceptedSocket))
    {
    }

    ~Connection() = default;
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    void Begin();
    void Refuse(uint32 status, int32 code, std::string detail);
    void CheckDeadline(uint64 nowUsec);
    void BeginStop();
    void Close();

private:
    enum class Phase
    {
        IDLE,    // between two requests
        REQUEST, // headers or body are coming in
        ANSWER,  // the resource has it
        WRITE,
        STREAM, // open, nothing to write
        LINGER, // all is said: the client is to read it before the connection goes
        CLOSED
    };

    /// The stream behind its receiver, which outlives it.
    struct StreamHolder
    {
        std::shared_ptr<EventBuffer> buffer;
        std::unique_ptr<ZuRest::OpenStream> stream;
    };

    void Enter(Phase newPhase, uint64 timeoutUsec);
    void ReadHeader();
    void TakeHeader(error_code const& error);
    void Continue();
    void ReadBody();
    void FailRead(error_code const& error);
    void Submit();
    ZuRest::Request TakeRequest();
    void TakeOutcome(uint64 number, Outcome outcome, std::shared_ptr<StreamHolder> holder);
    void Send(Answer answer, bool isLast);
    void Sent(error_code const& error, bool isLast);
    void Linger();
    void BeginStream(Answer const& answer, std::shared_ptr<StreamHolder> holder);
    void WatchClient();
    void Flush();
    void WriteToStream(std::string text);
    void EndStream(std::shared_ptr<StreamHolder> holder);

    template <typename Body>
    http::response<Body> MessageOf(Answer const& answer, bool isLast) const;

    Core& core;
    tcp::socket socket;
    boost::beast::flat_buffer buffer;
    std::optional<http::request_parser<http::string_body>> parser;
    std::optional<http::response<http::string_body>> message;
    std::optional<http::response<http::empty_body>> bareMessage; // for HEAD and the head of a stream
    std::optional<http::response_serializer<http::empty_body>> bareSerializer;

    Phase phase = Phase::IDLE;
    uint64 dueUsec = 0;
    bool isTimedOut = false;
    uint64 number = 0; // of the request: an outcome that comes too late is not taken for another
    std::shared_ptr<std::atomic<bool>> isWanted; // read by the workers
    std::shared_ptr<StreamHolder> stream;
    std::string streamText; // what is being written
    std::array<char, 4096> discarded{};
    uint64 discardedBytes = 0;
};

// The connection, in the order in which a request passes through it.

void HttpServer::Connection::Begin()
{
    ++number;
    parser.emplace();
    parser->header_limit(MAX_HEADER_BYTES);
    parser->body_limit(MAX_BODY_BYTES);
    if (buffer.size() != 0)
    {
        ReadHeader(); // the next one came in together with the last
        return;
    }
    Enter(Phase::IDLE, core.settings.idleTimeoutUsec);
    socket.async_wait(tcp::socket::wait_read, [self = shared_from_this()](error_code const& error) {
        if (error || self->phase != Phase::IDLE)
        {
            self->Close();
            return;
        }
        self->ReadHeader();
    });
}

void HttpServer::Connection::Enter(Phase newPhase, uint64 timeoutUsec)
{
    phase = newPhase;
    dueUsec = wTime_AfterUsec(timeoutUsec);
}

void HttpServer::Connection::ReadHeader()
{
    Enter(Phase::REQUEST, core.settings.requestTimeoutUsec);
    http::async_read_header(socket, buffer, *parser, [self = shared_from_this()](error_code const& error, std::size_t) {
        self->TakeHeader(error);
    });
}

void HttpServer::Connection::TakeHeader(error_code const& error)
{
    if (error || phase != Phase::REQUEST)
    {
        FailRead(error);
        return;
    }
    auto const& request = parser->get();
    bool const isOpenToAll = request.method() == http::verb::get && request.target() == "/health";
    if (!isOpenToAll && !BearerToken::IsGiven(core.settings.token, TextOf(request[http::field::authorization])))
    {
        Refuse(HttpStatus::UNAUTHORIZED, Zu::Status::WRITE_ONLY_REFUSED,
               "This service asks for a token: send the header Authorization: Bearer TOKEN.");
        return;
    }
    Enter(Phase::REQUEST, core.settings.requestTimeoutUsec);
    if (parser->is_done())
    {
        Submit();
    }
    else if (boost::beast::iequals(request[http::field::expect], "100-continue"))
    {
        Continue();
    }
    else
    {
        ReadBody();
    }
}

void HttpServer::Connection::Continue()
{
    static constexpr std::string_view TEXT = "HTTP/1.1 100 Continue\r\n\r\n";
    boost::asio::async_write(socket, boost::asio::buffer(TEXT.data(), TEXT.size()),
                             [self = shared_from_this()](error_code const& error, std::size_t) {
        if (error || self->phase != Phase::REQUEST)
        {
            self->FailRead(error);
            return;
        }
        self->ReadBody();
    });
}

void HttpServer::Connection::ReadBody()
{
    http::async_read(socket, buffer, *parser, [self = shared_from_this()](error_code const& error, std::size_t) {
        if (error || self->phase != Phase::REQUEST)
        {
            self->FailRead(error);
            return;
        }
        self->Submit();
    });
}

void HttpServer::Connection::FailRead(error_code const& error)
{
    if (phase != Phase::REQUEST)
    {
        return; // closed in the meantime
    }
    if (isTimedOut)
    {
        Refuse(HttpStatus::REQUEST_TIMEOUT, Zu::Status::TIME_OUT, "The request did not come in time.");
    }
    else if (error == http::error::header_limit || error == http::error::buffer_overflow)
    {
        Refuse(HttpStatus::HEADERS_TOO_LARGE, Zu::Status::BAD_FORMAT,
               "The headers are longer than " + std::to_string(MAX_HEADER_BYTES) + " bytes.");
    }
    else if (error == http::error::body_limit)
    {
        Refuse(HttpStatus::CONTENT_TOO_LARGE, Zu::Status::BAD_FORMAT,
               "The body is longer than " + std::to_string(MAX_BODY_BYTES) + " bytes.");
    }
    else if (error != http::error::end_of_stream &&
             error.category() == make_error_code(http::error::bad_method).category())
    {
        Refuse(HttpStatus::BAD_REQUEST, Zu::Status::BAD_FORMAT,
               "The request is not valid HTTP: " + error.message() + ".");
    }
    else
    {
        Close();
    }
}

ZuRest::Request HttpServer::Connection::TakeRequest()
{
    auto& message = parser->get();
    ZuRest::Request request;
    request.method = TextOf(message.method_string());
    std::string const target = PathAndQuery(message.target());
    std::size_t const mark = std::min(target.find('?'), target.size());
    request.path = target.substr(0, mark);
    request.query = target.substr(std::min(mark + 1, target.size()));
    request.body = std::move(message.body());
    request.accept = TextOf(message[http::field::accept]);
    request.ifMatch = TextOf(message[http::field::if_match]);
    request.ifNoneMatch = TextOf(message[http::field::if_none_match]);
    isWanted = std::make_shared<std::atomic<bool>>(true);
    request.isWanted = [flag = isWanted] { return flag->load(std::memory_order_relaxed); };
    return request;
}

void HttpServer::Connection::Submit()
{
    Enter(Phase::ANSWER, core.settings.answerTimeoutUsec);
    auto const holder = std::make_shared<StreamHolder>();
    auto makeReceiver = [holder, &io = core.io, weak = weak_from_this()](bool isState) -> ZuRest::IStreamReceiver& {
        holder->buffer = std::make_shared<EventBuffer>(isState, [&io, weak] {
            boost::asio::post(io, [weak] {
                if (auto const self = weak.lock())
                {
                    self->Flush();
                }
            });
        });
        return *holder->buffer;
    };
    core.Process(TakeRequest(), std::move(makeReceiver),
                 [self = shared_from_this(), holder, submitted = number](Outcome outcome) {
        self->TakeOutcome(submitted, std::move(outcome), holder);
    });
}

void HttpServer::Connection::TakeOutcome(uint64 submitted, Outcome outcome, std::shared_ptr<StreamHolder> holder)
{
    holder->stream = std::move(outcome.stream);
    if (phase != Phase::ANSWER || submitted != number)
    {
        EndStream(std::move(holder)); // nobody waits for it any more
    }
    else if (holder->stream != nullptr)
    {
        BeginStream(outcome.answer, std::move(holder));
    }
    else
    {
        Send(std::move(outcome.answer), !parser->keep_alive() || core.isStopping);
    }
}

template <typename Body>
http::response<Body> HttpServer::Connection::MessageOf(Answer const& answer, bool isLast) const
{
    http::response<Body> made{static_cast<http::status>(answer.status), 11};
    for (auto const& [name, value] : answer.headers)
    {
        made.set(name, value);
    }
    if (!answer.contentType.empty())
    {
        made.set(http::field::content_type, answer.contentType);
        made.set("X-Content-Type-Options", "nosniff");
    }
    made.keep_alive(!isLast);
    return made;
}

void HttpServer::Connection::Send(Answer answer, bool isLast)
{
    Enter(Phase::WRITE, core.settings.writeTimeoutUsec);
    bool const mayHaveBody = answer.status != HttpStatus::NO_CONTENT && answer.status != HttpStatus::NOT_MODIFIED;
    auto const sent = [self = shared_from_this(), isLast](error_code const& error, std::size_t) {
        self->Sent(error, isLast);
    };
    if (mayHaveBody && parser.has_value() && parser->get().method() != http::verb::head)
    {
        message = MessageOf<http::string_body>(answer, isLast);
        message->body() = std::move(answer.body);
        message->prepare_payload();
        http::async_write(socket, *message, sent);
        return;
    }
    bareMessage = MessageOf<http::empty_body>(answer, isLast);
    if (mayHaveBody)
    {
        bareMessage->content_length(answer.body.size());
    }
    bareSerializer.emplace(*bareMessage);
    http::async_write_header(socket, *bareSerializer, sent);
}

void HttpServer::Connection::Refuse(uint32 status, int32 code, std::string detail)
{
    ++number; // the outcome of what is under way is not waited for
    Answer answer = Refusal(status, code, std::move(detail));
    if (status == HttpStatus::UNAUTHORIZED)
    {
        answer.headers.emplace_back("WWW-Authenticate", "Bearer");
    }
    if (!parser.has_value())
    {
        parser.emplace();
    }
    Send(std::move(answer), true);
}

void HttpServer::Connection::Sent(error_code const& error, bool isLast)
{
    if (error || phase != Phase::WRITE)
    {
        Close();
    }
    else if (isLast || core.isStopping)
    {
        error_code ignored; // a client that is gone
        socket.shutdown(tcp::socket::shutdown_send, ignored);
        Enter(Phase::LINGER, LINGER_USEC);
        Linger();
    }
    else
    {
        Begin();
    }
}

/// A connection that closes with unread bytes takes back what was written: they are read, up to a bound.
void HttpServer::Connection::Linger()
{
    socket.async_read_some(boost::asio::buffer(discarded),
                           [self = shared_from_this()](error_code const& error, std::size_t bytes) {
        self->discardedBytes += bytes;
        if (error || self->phase != Phase::LINGER || self->discardedBytes > MAX_LINGER_BYTES)
        {
            self->Close();
            return;
        }
        self->Linger();
    });
}

void HttpServer::Connection::BeginStream(Answer const& answer, std::shared_ptr<StreamHolder> holder)
{
    stream = std::move(holder);
    Enter(Phase::WRITE, core.settings.writeTimeoutUsec);
    bareMessage = MessageOf<http::empty_body>(answer, true); // it ends with the connection
    bareSerializer.emplace(*bareMessage);
    http::async_write_header(socket, *bareSerializer,
                             [self = shared_from_this()](error_code const& error, std::size_t) {
        if (error || self->phase != Phase::WRITE)
        {
            self->Close();
            return;
        }
        self->Enter(Phase::STREAM, self->core.settings.commentPeriodUsec);
        self->WatchClient();
        self->Flush();
    });
}

/// A client has nothing more to say on a stream: what comes is passed over, and its end is the end of the stream.
void HttpServer::Connection::WatchClient()
{
    socket.async_read_some(boost::asio::buffer(discarded),
                           [self = shared_from_this()](error_code const& error, std::size_t) {
        if (error || self->phase == Phase::CLOSED)
        {
            self->Close();
            return;
        }
        self->WatchClient();
    });
}

void HttpServer::Connection::Flush()
{
    if (phase != Phase::STREAM)
    {
        return; // a write is under way, and looks here again when it ends
    }
    if (std::string text = stream->buffer->Take(); !text.empty())
    {
        WriteToStream(std::move(text));
    }
}

void HttpServer::Connection::WriteToStream(std::string text)
{
    Enter(Phase::WRITE, core.settings.writeTimeoutUsec);
    streamText = std::move(text);
    boost::asio::async_write(socket, boost::asio::buffer(streamText),
                             [self = shared_from_this()](error_code const& error, std::size_t) {
        if (error || self->phase != Phase::WRITE)
        {
            self->Close();
            return;
        }
        self->Enter(Phase::STREAM, self->core.settings.commentPeriodUsec);
        self->Flush();
    });
}

void HttpServer::Connection::EndStream(std::shared_ptr<StreamHolder> holder)
{
    if (holder != nullptr && holder->stream != nullptr)
    {
        core.workers->Run([held = std::move(holder)] { held->stream.reset(); }); // the resource may take its time
    }
}

void HttpServer::Connection::CheckDeadline(uint64 nowUsec)
{
    if (nowUsec < dueUsec)
    {
        return;
    }
    error_code ignored;
    switch (phase)
    {
    case Phase::REQUEST:
        isTimedOut = true;
        dueUsec = wTIMEOUT_INFINITE;
        socket.cancel(ignored); // the read that fails by it answers
        break;
    case Phase::ANSWER:
        isWanted->store(false, std::memory_order_relaxed);
        Refuse(HttpStatus::SERVICE_UNAVAILABLE, Zu::Status::BUSY, "The resource did not answer in time.");
        break;
    case Phase::STREAM:
        WriteToStream(": still here\n\n");
        break;
    default:
        Close();
        break;
    }
}

void HttpServer::Connection::BeginStop()
{
    bool const isUnderWay = phase == Phase::ANSWER || (phase == Phase::WRITE && stream == nullptr);
    if (!isUnderWay)
    {
        Close();
    }
}

void HttpServer::Connection::Close()
{
    if (phase == Phase::CLOSED)
    {
        return;
    }
    phase = Phase::CLOSED;
    if (isWanted != nullptr)
    {
        isWanted->store(false, std::memory_order_relaxed);
    }
    error_code ignored; // whatever does not close goes with the socket
    socket.close(ignored);
    EndStream(std::exchange(stream, nullptr));
    core.Forget(shared_from_this());
}

// The core.

HttpServer::Core::Core(ZuRest::ResourceRequestProcessor& usedProcessor, Settings const& usedSettings)
    : settings(usedSettings), processor(usedProcessor)
{
    Listen();
    workers.emplace();
    ZU_CHECK(wThread_Construct(&thread));
    ZU_CHECK(wThread_SetName(thread, "Http.Io"));
    Accept();
    Sweep();
    ZU_CHECK(wThread_Start(thread, &Core::Main, this)); // last: the thread uses all of the above
}

HttpServer::Core::~Core()
{
    ZU_GUARD_DESTRUCTOR([this] {
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

void HttpServer::Core::Forget(std::shared_ptr<Connection> const& connection)
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
    tcp::endpoint const wanted(address, settings.port);
    acceptor.open(wanted.protocol(), error);
    error = error ? error : (acceptor.set_option(tcp::acceptor::reuse_address(true), error), error);
    error = error ? error : (acceptor.bind(wanted, error), error);
    error = error ? error : (acceptor.listen(tcp::acceptor::max_listen_connections, error), error);
    if (error)
    {
        ZU_THROW(StatusOf(error), "The REST service cannot listen on %s: %s", where.c_str(), error.message().c_str());
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
    auto const connection = std::make_shared<Connection>(*this, std::move(socket));
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
    std::vector<std::shared_ptr<Connection>> const all(connections.begin(), connections.end());
    uint64 const nowUsec = wTime_NowUsec();
    for (auto const& connection : all) // a copy: one that ends leaves the set
    {
        ZU_GUARD_BOUNDARY([&] { connection->CheckDeadline(nowUsec); });
    }
    sweep.expires_after(SWEEP_PERIOD);
    sweep.async_wait([this](error_code const& error) {
        if (!error)
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
    std::vector<std::shared_ptr<Connection>> const all(connections.begin(), connections.end());
    for (auto const& connection : all)
    {
        connection->BeginStop();
    }
}

void HttpServer::Core::CloseAll()
{
    sweep.cancel();
    std::vector<std::shared_ptr<Connection>> const all(connections.begin(), connections.end());
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

// The face.

HttpServer::HttpServer(ZuRest::ResourceRequestProcessor& usedProcessor) : processor(usedProcessor)
{
}

HttpServer::~HttpServer()
{
    Stop();
}

void HttpServer::Start(Settings const& settings)
{
    if (core != nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE);
    }
    core = std::make_unique<Core>(processor, settings);
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
