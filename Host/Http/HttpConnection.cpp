#include "Host/Http/HttpConnection.h"

#include "Host/Http/AnswerHead.h"
#include "Host/Http/BearerToken.h"
#include "Host/Http/Descriptor.h"
#include "Host/Http/EventBuffer.h"
#include "Host/Http/IHttpService.h"
#include "Host/Http/RequestOrigin.h"
#include "ZuRest/Problem.h"
#include "wApi/wStatus.h"
#include "wApi/wTime.h"

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <array>
#include <atomic>
#include <cerrno>
#include <optional>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/uio.h>

namespace ZuHost
{

namespace http = boost::beast::http;
namespace HttpStatus = ZuRest::HttpStatus;
using boost::system::error_code;
using ZuRest::Answer;
using Outcome = ZuRest::ResourceRequestProcessor::Outcome;

namespace
{

constexpr uint64 LINGER_USEC = 2'000'000;
constexpr uint64 STOP_LINGER_USEC = 100'000; // nobody waits long for a client when the server stops
constexpr uint64 MAX_LINGER_BYTES = 8 * HttpServer::MAX_BODY_BYTES;

constexpr std::size_t HEADER_READ_BYTES = 4 * 1024; // most requests are shorter
constexpr std::size_t BODY_READ_BYTES = 16 * 1024;
constexpr unsigned MAX_READS = 32; // in a row: then others have their turn

std::string_view TextOf(boost::beast::string_view text)
{
    return {text.data(), text.size()};
}

/// What a request is sent to: its target without the scheme and the host that may stand before the path.
struct Target
{
    std::string_view host; // empty when the target has none
    std::string_view pathAndQuery;

    static Target Of(std::string_view text)
    {
        constexpr std::string_view SCHEME = "http://";
        if (!text.starts_with(SCHEME))
        {
            return {"", text};
        }
        std::size_t const path = std::min(text.find('/', SCHEME.size()), text.size());
        return {text.substr(SCHEME.size(), path - SCHEME.size()),
                path != text.size() ? text.substr(path) : std::string_view("/")};
    }
};

Answer Refusal(uint32 status, int32 code, std::string detail)
{
    return ZuRest::Problem{status, std::move(detail), code, {}}.ToAnswer();
}

/// What one read from a socket has given.
enum class Received
{
    BYTES,
    NOTHING, // for now
    END,
    FAILURE
};

class SocketConnection final : public HttpConnection, public std::enable_shared_from_this<SocketConnection>
{
public:
    SocketConnection(IHttpService& owningService, Descriptor acceptedSocket)
        : service(owningService), limits(service.Limits()), socket(std::move(acceptedSocket))
    {
    }

    ~SocketConnection() override = default;
    SocketConnection(SocketConnection const&) = delete;
    SocketConnection& operator=(SocketConnection const&) = delete;

    void OnReady(uint32 events) override;
    void Begin() override;
    void Refuse(uint32 status, int32 code, std::string detail) override;
    ZuRest::IStreamReceiver& MakeReceiver(bool isState) override;
    void TakeOutcome(Outcome outcome) override;
    void SendNow() override;
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

    /// What comes behind a write.
    enum class Next
    {
        BODY,
        REQUEST,
        STREAM,
        END
    };

    /// The stream behind its receiver, which outlives it.
    struct StreamHolder
    {
        std::unique_ptr<EventBuffer> buffer;
        std::unique_ptr<ZuRest::OpenStream> stream;
    };

    void Enter(Phase newPhase, uint64 timeoutUsec);
    void GoOnSoon();
    void GoOn();
    void ReadRequest();
    Received Receive(void* bytes, std::size_t capacity, std::size_t& count);
    bool Parse();
    bool TakeHeader();
    bool RefuseForeign();
    void TakeEnd();
    void FailRead(error_code const& error);
    void Submit();
    ZuRest::Request TakeRequest();
    void Send(Answer answer, bool isLast);
    void Write(Next newNext);
    void BeginWrite(Next newNext);
    void WriteOn();
    void Written();
    void Discard();
    void BeginStream(Answer const& answer);
    void Flush();
    void WriteToStream(std::string text);
    void EndStream();

    IHttpService& service;
    HttpServer::Settings const& limits;
    Descriptor socket;
    bool mayHaveBytes = false; // a read may give something
    bool hasEnded = false;     // the client, or the connection, will bring its end to a read
    bool isGoingOnSoon = false;
    boost::beast::flat_buffer buffer;
    std::optional<http::request_parser<http::string_body>> parser;
    bool hasHeader = false;

    std::string head;
    std::string body;
    std::size_t writtenBytes = 0; // of both
    Next next = Next::REQUEST;

    Phase phase = Phase::IDLE;
    uint64 dueUsec = 0;
    std::atomic<bool> isWanted = true; // the request that is under way; read by who carries it out
    StreamHolder stream;               // while a request is carried out, it belongs to who does that
    bool hasNews = false;              // reports that came while something was being written
    uint64 discardedBytes = 0;
};

} // namespace

// In the order in which a request passes through it.

/// Behind a request that has been submitted nothing is touched: it may have cost this thread the I/O.
void SocketConnection::OnReady(uint32 events)
{
    mayHaveBytes = mayHaveBytes || (events & ~uint32{EPOLLOUT}) != 0;
    hasEnded = hasEnded || (events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0;
    GoOn();
}

void SocketConnection::GoOn()
{
    switch (phase)
    {
    case Phase::IDLE:
    case Phase::REQUEST:
        ReadRequest();
        break;
    case Phase::WRITE:
        if (next == Next::STREAM)
        {
            Discard();
        }
        if (phase == Phase::WRITE)
        {
            WriteOn();
        }
        break;
    case Phase::STREAM:
        Discard();
        Flush();
        break;
    case Phase::LINGER:
        Discard();
        break;
    default:
        break; // a request is under way: its end looks here again
    }
}

/// Lets others have their turn first.
void SocketConnection::GoOnSoon()
{
    if (std::exchange(isGoingOnSoon, true))
    {
        return;
    }
    service.Post([self = shared_from_this()] {
        self->isGoingOnSoon = false;
        self->GoOn();
    });
}

void SocketConnection::Begin()
{
    parser.emplace();
    parser->header_limit(HttpServer::MAX_HEADER_BYTES);
    parser->body_limit(HttpServer::MAX_BODY_BYTES);
    hasHeader = false;
    bool const hasMore = buffer.size() != 0; // the next one came in together with the last
    Enter(hasMore ? Phase::REQUEST : Phase::IDLE, hasMore ? limits.requestTimeoutUsec : limits.idleTimeoutUsec);
    if (hasMore || mayHaveBytes)
    {
        GoOnSoon();
    }
}

void SocketConnection::Enter(Phase newPhase, uint64 timeoutUsec)
{
    uint64 const nowUsec = service.NowUsec();
    phase = newPhase;
    dueUsec = timeoutUsec < wTIMEOUT_INFINITE - nowUsec ? nowUsec + timeoutUsec : wTIMEOUT_INFINITE;
}

void SocketConnection::ReadRequest()
{
    for (unsigned reads = 0; Parse(); ++reads)
    {
        if (reads == MAX_READS)
        {
            GoOnSoon();
            return;
        }
        std::size_t const capacity = hasHeader ? BODY_READ_BYTES : HEADER_READ_BYTES;
        std::size_t count = 0;
        switch (Receive(buffer.prepare(capacity).data(), capacity, count))
        {
        case Received::NOTHING:
            return;
        case Received::END:
            TakeEnd();
            return;
        case Received::FAILURE:
            Close();
            return;
        case Received::BYTES:
            break;
        }
        buffer.commit(count);
        if (phase == Phase::IDLE)
        {
            Enter(Phase::REQUEST, limits.requestTimeoutUsec);
        }
    }
}

Received SocketConnection::Receive(void* bytes, std::size_t capacity, std::size_t& count)
{
    if (!mayHaveBytes)
    {
        return Received::NOTHING;
    }
    ssize_t const got = recv(socket.Number(), bytes, capacity, 0);
    if (got > 0)
    {
        count = static_cast<std::size_t>(got);
        mayHaveBytes = count == capacity || hasEnded; // the end is told once, and perhaps ahead of the last bytes
        return Received::BYTES;
    }
    if (got == 0)
    {
        return Received::END;
    }
    if (errno == EAGAIN || errno == EINTR)
    {
        mayHaveBytes = errno == EINTR;
        return Received::NOTHING;
    }
    return Received::FAILURE;
}

/// True when it takes more bytes to go on.
bool SocketConnection::Parse()
{
    while (buffer.size() != 0)
    {
        error_code error;
        buffer.consume(parser->put(buffer.data(), error));
        if (error == http::error::need_more)
        {
            return true;
        }
        if (error)
        {
            FailRead(error);
            return false;
        }
        if (!hasHeader && parser->is_header_done() && !TakeHeader())
        {
            return false;
        }
        if (parser->is_done())
        {
            Submit();
            return false;
        }
    }
    return true;
}

/// False when the client has to be told something first.
bool SocketConnection::TakeHeader()
{
    static constexpr std::string_view CONTINUE = "HTTP/1.1 100 Continue\r\n\r\n";
    hasHeader = true;
    if (RefuseForeign())
    {
        return false;
    }
    auto const& request = parser->get();
    bool const isOpenToAll = request.method() == http::verb::get && request.target() == "/health";
    if (!isOpenToAll && !BearerToken::IsGiven(limits.token, TextOf(request[http::field::authorization])))
    {
        Refuse(HttpStatus::UNAUTHORIZED, Zu::Status::WRITE_ONLY_REFUSED,
               "This service asks for a token: send the header Authorization: Bearer TOKEN.");
        return false;
    }
    Enter(Phase::REQUEST, limits.requestTimeoutUsec);
    parser->eager(true); // the body comes in one go
    if (!parser->is_done() && boost::beast::iequals(request[http::field::expect], "100-continue"))
    {
        head = CONTINUE;
        body.clear();
        Write(Next::BODY);
        return false;
    }
    return true;
}

/// True when the request was refused: it names no host as it must, or a page from elsewhere is behind it.
bool SocketConnection::RefuseForeign()
{
    auto const& request = parser->get();
    Target const target = Target::Of(TextOf(request.target()));
    std::size_t const hosts = request.count(http::field::host);
    if (hosts > 1 || (hosts == 0 && request.version() > 10))
    {
        Refuse(HttpStatus::BAD_REQUEST, Zu::Status::BAD_FORMAT, "The request needs one header Host.");
        return true;
    }
    std::string_view const host = target.host.empty() ? TextOf(request[http::field::host]) : target.host;
    bool const namesUs = host.empty() ? hosts == 0 : RequestOrigin::IsThisMachine(host);
    if (service.IsLocal() && !namesUs)
    {
        Refuse(HttpStatus::FORBIDDEN, Zu::Status::WRITE_ONLY_REFUSED,
               "This service answers to localhost and the loopback addresses only, not to '" + std::string(host) +
                   "'.");
        return true;
    }
    auto const origin = request.find(http::field::origin);
    if (origin != request.end() && !RequestOrigin::IsOwn(TextOf(origin->value()), host))
    {
        Refuse(HttpStatus::FORBIDDEN, Zu::Status::WRITE_ONLY_REFUSED,
               "This service takes no requests from pages of '" + std::string(TextOf(origin->value())) + "'.");
        return true;
    }
    return false;
}

/// The client sends nothing more.
void SocketConnection::TakeEnd()
{
    if (!parser->got_some())
    {
        Close();
        return;
    }
    error_code error;
    parser->put_eof(error);
    FailRead(error ? error : make_error_code(http::error::partial_message)); // no request ends with the connection
}

void SocketConnection::FailRead(error_code const& error)
{
    if (error == http::error::header_limit || error == http::error::buffer_overflow)
    {
        Refuse(HttpStatus::HEADERS_TOO_LARGE, Zu::Status::BAD_FORMAT,
               "The headers are longer than " + std::to_string(HttpServer::MAX_HEADER_BYTES) + " bytes.");
    }
    else if (error == http::error::body_limit)
    {
        Refuse(HttpStatus::CONTENT_TOO_LARGE, Zu::Status::BAD_FORMAT,
               "The body is longer than " + std::to_string(HttpServer::MAX_BODY_BYTES) + " bytes.");
    }
    else
    {
        Refuse(HttpStatus::BAD_REQUEST, Zu::Status::BAD_FORMAT,
               "The request is not valid HTTP: " + error.message() + ".");
    }
}

void SocketConnection::Submit()
{
    Enter(Phase::ANSWER, limits.answerTimeoutUsec);
    service.Process(shared_from_this(), TakeRequest());
}

ZuRest::Request SocketConnection::TakeRequest()
{
    auto& message = parser->get();
    ZuRest::Request request;
    request.method = TextOf(message.method_string());
    std::string_view const target = Target::Of(TextOf(message.target())).pathAndQuery;
    std::size_t const mark = std::min(target.find('?'), target.size());
    request.path = target.substr(0, mark);
    request.query = target.substr(std::min(mark + 1, target.size()));
    request.body = std::move(message.body());
    request.accept = TextOf(message[http::field::accept]);
    request.ifMatch = TextOf(message[http::field::if_match]);
    request.ifNoneMatch = TextOf(message[http::field::if_none_match]);
    request.isWanted = [this] { return isWanted.load(std::memory_order_relaxed); }; // who carries it out holds this
    return request;
}

ZuRest::IStreamReceiver& SocketConnection::MakeReceiver(bool isState)
{
    stream.buffer = std::make_unique<EventBuffer>(isState, [&to = service, weak = weak_from_this()] {
        to.Post([weak] {
            if (auto const self = weak.lock())
            {
                self->Flush();
            }
        });
    });
    return *stream.buffer;
}

void SocketConnection::TakeOutcome(Outcome outcome)
{
    stream.stream = std::move(outcome.stream);
    if (phase != Phase::ANSWER)
    {
        EndStream(); // nobody waits for it any more
    }
    else if (stream.stream != nullptr)
    {
        BeginStream(outcome.answer);
    }
    else
    {
        Send(std::move(outcome.answer), !parser->keep_alive() || service.IsStopping());
    }
}

void SocketConnection::Send(Answer answer, bool isLast)
{
    bool const mayHaveBody = answer.status != HttpStatus::NO_CONTENT && answer.status != HttpStatus::NOT_MODIFIED;
    bool const isAskedForBody = !parser.has_value() || parser->get().method() != http::verb::head;
    head.clear();
    AnswerHead::Append(head, answer, service.Date(), isLast,
                       mayHaveBody ? std::optional<uint64>(answer.body.size()) : std::nullopt);
    body = mayHaveBody && isAskedForBody ? std::move(answer.body) : std::string();
    BeginWrite(isLast ? Next::END : Next::REQUEST);
    service.SendSoon(shared_from_this());
}

void SocketConnection::Refuse(uint32 status, int32 code, std::string detail)
{
    Answer answer = Refusal(status, code, std::move(detail));
    if (status == HttpStatus::UNAUTHORIZED)
    {
        answer.headers.emplace_back("WWW-Authenticate", "Bearer");
    }
    Send(std::move(answer), true);
}

/// Writes `head` and `body`, as far as the socket takes them at once; the rest when it takes more.
void SocketConnection::Write(Next newNext)
{
    BeginWrite(newNext);
    WriteOn();
}

void SocketConnection::BeginWrite(Next newNext)
{
    Enter(Phase::WRITE, limits.writeTimeoutUsec);
    next = newNext;
    writtenBytes = 0;
}

void SocketConnection::SendNow()
{
    if (phase == Phase::WRITE) // else there was no need to wait, or no time
    {
        WriteOn();
    }
}

void SocketConnection::WriteOn()
{
    while (writtenBytes != head.size() + body.size())
    {
        std::size_t const ofHead = std::min(writtenBytes, head.size());
        std::size_t const ofBody = writtenBytes - ofHead;
        std::array<iovec, 2> parts{
            {{head.data() + ofHead, head.size() - ofHead}, {body.data() + ofBody, body.size() - ofBody}}};
        msghdr message{};
        message.msg_iov = parts.data();
        message.msg_iovlen = body.empty() ? 1 : parts.size();
        ssize_t const sent = sendmsg(socket.Number(), &message, MSG_NOSIGNAL);
        if (sent >= 0)
        {
            writtenBytes += static_cast<std::size_t>(sent);
        }
        else if (errno == EAGAIN)
        {
            return;
        }
        else if (errno != EINTR)
        {
            Close();
            return;
        }
    }
    Written();
}

void SocketConnection::Written()
{
    if (next == Next::STREAM)
    {
        Enter(Phase::STREAM, limits.commentPeriodUsec);
        if (hasNews || mayHaveBytes)
        {
            GoOnSoon();
        }
    }
    else if (next == Next::BODY)
    {
        Enter(Phase::REQUEST, limits.requestTimeoutUsec);
        GoOnSoon();
    }
    else if (next == Next::END || service.IsStopping())
    {
        shutdown(socket.Number(), SHUT_WR); // fails for a client that is gone
        Enter(Phase::LINGER, service.IsStopping() ? STOP_LINGER_USEC : LINGER_USEC);
        GoOnSoon();
    }
    else
    {
        Begin();
    }
}

/// Reads what nobody is to see. A connection that closes with unread bytes takes back what was written: those behind the last
/// answer are read up to a bound. On a stream a client has nothing more to say: its end is the end of the stream.
void SocketConnection::Discard()
{
    std::array<char, 16 * 1024> discarded;
    for (unsigned reads = 0; reads < MAX_READS; ++reads)
    {
        std::size_t count = 0;
        Received const received = Receive(discarded.data(), discarded.size(), count);
        if (received == Received::NOTHING)
        {
            return;
        }
        discardedBytes += count;
        if (received != Received::BYTES || (phase == Phase::LINGER && discardedBytes > MAX_LINGER_BYTES))
        {
            Close();
            return;
        }
    }
    GoOnSoon();
}

void SocketConnection::BeginStream(Answer const& answer)
{
    head.clear();
    AnswerHead::Append(head, answer, service.Date(), true, std::nullopt); // it ends with the connection
    body.clear();
    Write(Next::STREAM);
}

void SocketConnection::Flush()
{
    hasNews = phase != Phase::STREAM; // a write is under way, and looks here again when it ends
    if (hasNews)
    {
        return;
    }
    if (std::string text = stream.buffer->Take(); !text.empty())
    {
        WriteToStream(std::move(text));
    }
}

void SocketConnection::WriteToStream(std::string text)
{
    head = std::move(text);
    body.clear();
    Write(Next::STREAM);
}

void SocketConnection::EndStream()
{
    if (stream.stream != nullptr)
    {
        auto const held = std::make_shared<StreamHolder>(std::move(stream));
        service.RunLater([held] { held->stream.reset(); }); // the resource may take its time
    }
}

void SocketConnection::CheckDeadline(uint64 nowUsec)
{
    if (nowUsec < dueUsec)
    {
        return;
    }
    switch (phase)
    {
    case Phase::REQUEST:
        Refuse(HttpStatus::REQUEST_TIMEOUT, Zu::Status::TIME_OUT, "The request did not come in time.");
        break;
    case Phase::ANSWER:
        isWanted.store(false, std::memory_order_relaxed);
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

void SocketConnection::BeginStop()
{
    bool const isUnderWay = phase == Phase::ANSWER || (phase == Phase::WRITE && next != Next::STREAM);
    if (!isUnderWay)
    {
        Close();
    }
}

void SocketConnection::Close()
{
    if (phase == Phase::CLOSED)
    {
        return;
    }
    bool const isStreaming = next == Next::STREAM;
    phase = Phase::CLOSED;
    isWanted.store(false, std::memory_order_relaxed);
    socket.Close();
    if (isStreaming)
    {
        EndStream();
    }
    service.Forget(shared_from_this());
}

HttpConnection::~HttpConnection() = default;

std::shared_ptr<HttpConnection> HttpConnection::Make(IHttpService& service, Descriptor socket)
{
    return std::make_shared<SocketConnection>(service, std::move(socket));
}

} // namespace ZuHost
