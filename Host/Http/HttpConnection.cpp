#include "Host/Http/HttpConnection.h"

#include "Host/Http/BearerToken.h"
#include "Host/Http/EventBuffer.h"
#include "Host/Http/IHttpService.h"
#include "Host/Http/RequestOrigin.h"
#include "ZuRest/Problem.h"
#include "wApi/wStatus.h"
#include "wApi/wTime.h"

#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>

#include <array>
#include <atomic>
#include <optional>

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

constexpr uint64 LINGER_USEC = 2'000'000;
constexpr uint64 STOP_LINGER_USEC = 100'000; // nobody waits long for a client when the server stops
constexpr uint64 MAX_LINGER_BYTES = 8 * HttpServer::MAX_BODY_BYTES;

std::string TextOf(boost::beast::string_view text)
{
    return {text.data(), text.size()};
}

/// What a request is sent to: its target without the scheme and the host that may stand before the path.
struct Target
{
    std::string host; // empty when the target has none
    std::string pathAndQuery;

    static Target Of(boost::beast::string_view target)
    {
        constexpr std::string_view SCHEME = "http://";
        std::string const text = TextOf(target);
        if (!text.starts_with(SCHEME))
        {
            return {"", text};
        }
        std::size_t const path = std::min(text.find('/', SCHEME.size()), text.size());
        return {text.substr(SCHEME.size(), path - SCHEME.size()), path != text.size() ? text.substr(path) : "/"};
    }
};

Answer Refusal(uint32 status, int32 code, std::string detail)
{
    return ZuRest::Problem{status, std::move(detail), code, {}}.ToAnswer();
}

class BeastConnection final : public HttpConnection, public std::enable_shared_from_this<BeastConnection>
{
public:
    BeastConnection(IHttpService& owningService, tcp::socket acceptedSocket)
        : service(owningService), limits(service.Limits()), socket(std::move(acceptedSocket))
    {
    }

    ~BeastConnection() override = default;
    BeastConnection(BeastConnection const&) = delete;
    BeastConnection& operator=(BeastConnection const&) = delete;

    void Begin() override;
    void Refuse(uint32 status, int32 code, std::string detail) override;
    void CheckDeadline(uint64 nowUsec) override;
    void BeginStop() override;
    void Close() override;

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
    bool RefuseForeign();
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

    IHttpService& service;
    HttpServer::Settings const& limits;
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

} // namespace

// In the order in which a request passes through it.

void BeastConnection::Begin()
{
    ++number;
    parser.emplace();
    parser->header_limit(HttpServer::MAX_HEADER_BYTES);
    parser->body_limit(HttpServer::MAX_BODY_BYTES);
    if (buffer.size() != 0)
    {
        ReadHeader(); // the next one came in together with the last
        return;
    }
    Enter(Phase::IDLE, limits.idleTimeoutUsec);
    socket.async_wait(tcp::socket::wait_read, [self = shared_from_this()](error_code const& error) {
        if (error || self->phase != Phase::IDLE)
        {
            self->Close();
            return;
        }
        self->ReadHeader();
    });
}

void BeastConnection::Enter(Phase newPhase, uint64 timeoutUsec)
{
    phase = newPhase;
    dueUsec = wTime_AfterUsec(timeoutUsec);
}

void BeastConnection::ReadHeader()
{
    Enter(Phase::REQUEST, limits.requestTimeoutUsec);
    http::async_read_header(socket, buffer, *parser, [self = shared_from_this()](error_code const& error, std::size_t) {
        self->TakeHeader(error);
    });
}

void BeastConnection::TakeHeader(error_code const& error)
{
    if (error || phase != Phase::REQUEST)
    {
        FailRead(error);
        return;
    }
    if (RefuseForeign())
    {
        return;
    }
    auto const& request = parser->get();
    bool const isOpenToAll = request.method() == http::verb::get && request.target() == "/health";
    if (!isOpenToAll && !BearerToken::IsGiven(limits.token, TextOf(request[http::field::authorization])))
    {
        Refuse(HttpStatus::UNAUTHORIZED, Zu::Status::WRITE_ONLY_REFUSED,
               "This service asks for a token: send the header Authorization: Bearer TOKEN.");
        return;
    }
    Enter(Phase::REQUEST, limits.requestTimeoutUsec);
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

/// True when the request was refused: it names no host as it must, or a page from elsewhere is behind it.
bool BeastConnection::RefuseForeign()
{
    auto const& request = parser->get();
    Target const target = Target::Of(request.target());
    std::size_t const hosts = request.count(http::field::host);
    if (hosts > 1 || (hosts == 0 && request.version() > 10))
    {
        Refuse(HttpStatus::BAD_REQUEST, Zu::Status::BAD_FORMAT, "The request needs one header Host.");
        return true;
    }
    std::string const host = target.host.empty() ? TextOf(request[http::field::host]) : target.host;
    bool const namesUs = host.empty() ? hosts == 0 : RequestOrigin::IsThisMachine(host);
    if (service.IsLocal() && !namesUs)
    {
        Refuse(HttpStatus::FORBIDDEN, Zu::Status::WRITE_ONLY_REFUSED,
               "This service answers to localhost and the loopback addresses only, not to '" + host + "'.");
        return true;
    }
    auto const origin = request.find(http::field::origin);
    if (origin != request.end() && !RequestOrigin::IsOwn(TextOf(origin->value()), host))
    {
        Refuse(HttpStatus::FORBIDDEN, Zu::Status::WRITE_ONLY_REFUSED,
               "This service takes no requests from pages of '" + TextOf(origin->value()) + "'.");
        return true;
    }
    return false;
}

void BeastConnection::Continue()
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

void BeastConnection::ReadBody()
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

void BeastConnection::FailRead(error_code const& error)
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
               "The headers are longer than " + std::to_string(HttpServer::MAX_HEADER_BYTES) + " bytes.");
    }
    else if (error == http::error::body_limit)
    {
        Refuse(HttpStatus::CONTENT_TOO_LARGE, Zu::Status::BAD_FORMAT,
               "The body is longer than " + std::to_string(HttpServer::MAX_BODY_BYTES) + " bytes.");
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

ZuRest::Request BeastConnection::TakeRequest()
{
    auto& message = parser->get();
    ZuRest::Request request;
    request.method = TextOf(message.method_string());
    std::string const target = Target::Of(message.target()).pathAndQuery;
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

void BeastConnection::Submit()
{
    Enter(Phase::ANSWER, limits.answerTimeoutUsec);
    auto const holder = std::make_shared<StreamHolder>();
    auto makeReceiver = [holder, executor = socket.get_executor(),
                         weak = weak_from_this()](bool isState) -> ZuRest::IStreamReceiver& {
        holder->buffer = std::make_shared<EventBuffer>(isState, [executor, weak] {
            boost::asio::post(executor, [weak] {
                if (auto const self = weak.lock())
                {
                    self->Flush();
                }
            });
        });
        return *holder->buffer;
    };
    service.Process(TakeRequest(), std::move(makeReceiver),
                    [self = shared_from_this(), holder, submitted = number](Outcome outcome) {
        self->TakeOutcome(submitted, std::move(outcome), holder);
    });
}

void BeastConnection::TakeOutcome(uint64 submitted, Outcome outcome, std::shared_ptr<StreamHolder> holder)
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
        Send(std::move(outcome.answer), !parser->keep_alive() || service.IsStopping());
    }
}

template <typename Body>
http::response<Body> BeastConnection::MessageOf(Answer const& answer, bool isLast) const
{
    http::response<Body> made{static_cast<http::status>(answer.status), 11};
    made.set(http::field::date, service.Date());
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

void BeastConnection::Send(Answer answer, bool isLast)
{
    Enter(Phase::WRITE, limits.writeTimeoutUsec);
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

void BeastConnection::Refuse(uint32 status, int32 code, std::string detail)
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

void BeastConnection::Sent(error_code const& error, bool isLast)
{
    if (error || phase != Phase::WRITE)
    {
        Close();
    }
    else if (isLast || service.IsStopping())
    {
        error_code ignored; // a client that is gone
        socket.shutdown(tcp::socket::shutdown_send, ignored);
        Enter(Phase::LINGER, service.IsStopping() ? STOP_LINGER_USEC : LINGER_USEC);
        Linger();
    }
    else
    {
        Begin();
    }
}

/// A connection that closes with unread bytes takes back what was written: they are read, up to a bound.
void BeastConnection::Linger()
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

void BeastConnection::BeginStream(Answer const& answer, std::shared_ptr<StreamHolder> holder)
{
    stream = std::move(holder);
    Enter(Phase::WRITE, limits.writeTimeoutUsec);
    bareMessage = MessageOf<http::empty_body>(answer, true); // it ends with the connection
    bareSerializer.emplace(*bareMessage);
    http::async_write_header(socket, *bareSerializer,
                             [self = shared_from_this()](error_code const& error, std::size_t) {
        if (error || self->phase != Phase::WRITE)
        {
            self->Close();
            return;
        }
        self->Enter(Phase::STREAM, self->limits.commentPeriodUsec);
        self->WatchClient();
        self->Flush();
    });
}

/// A client has nothing more to say on a stream: what comes is passed over, and its end is the end of the stream.
void BeastConnection::WatchClient()
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

void BeastConnection::Flush()
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

void BeastConnection::WriteToStream(std::string text)
{
    Enter(Phase::WRITE, limits.writeTimeoutUsec);
    streamText = std::move(text);
    boost::asio::async_write(socket, boost::asio::buffer(streamText),
                             [self = shared_from_this()](error_code const& error, std::size_t) {
        if (error || self->phase != Phase::WRITE)
        {
            self->Close();
            return;
        }
        self->Enter(Phase::STREAM, self->limits.commentPeriodUsec);
        self->Flush();
    });
}

void BeastConnection::EndStream(std::shared_ptr<StreamHolder> holder)
{
    if (holder != nullptr && holder->stream != nullptr)
    {
        service.RunLater([held = std::move(holder)] { held->stream.reset(); }); // the resource may take its time
    }
}

void BeastConnection::CheckDeadline(uint64 nowUsec)
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

void BeastConnection::BeginStop()
{
    bool const isUnderWay = phase == Phase::ANSWER || (phase == Phase::WRITE && stream == nullptr);
    if (!isUnderWay)
    {
        Close();
    }
}

void BeastConnection::Close()
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
    service.Forget(shared_from_this());
}

HttpConnection::~HttpConnection() = default;

std::shared_ptr<HttpConnection> HttpConnection::Make(IHttpService& service, tcp::socket socket)
{
    return std::make_shared<BeastConnection>(service, std::move(socket));
}

} // namespace ZuHost
