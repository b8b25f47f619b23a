#include "Host/Http/HttpConnection.h"

#include "Host/Http/AnswerHead.h"
#include "Host/Http/BodyBuffer.h"
#include "Host/Http/EventBuffer.h"
#include "Host/Http/IGatekeeper.h"
#include "ZuRest/Problem.h"
#include "wApi/wTypes.h"

#include <boost/asio/dispatch.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/post.hpp>

#include <algorithm>

namespace ZuHost
{

namespace asio = boost::asio;
namespace HttpStatus = ZuRest::HttpStatus;
using boost::system::error_code;
using ZuRest::Answer;

namespace
{

constexpr uint64 LINGER_USEC = 2'000'000;
constexpr uint64 STOP_LINGER_USEC = 100'000; // an orderly stop does not wait long for clients
constexpr uint64 MAX_LINGER_BYTES = 8 * HttpServer::MAX_BODY_BYTES;
constexpr uint64 LONGEST_TIMEOUT_USEC = 1'000'000ULL * 60 * 60 * 24 * 365; // keeps deadlines within the clock's range

Answer Refusal(uint32 status, int32 code, std::string detail)
{
    return ZuRest::Problem{status, std::move(detail), code, {}}.ToAnswer();
}

} // namespace

/// A stream of events: the resource reports to the buffer until the stream ends.
struct HttpConnection::EventStream
{
    EventStream(bool isState, std::function<void()> wake) : buffer(isState, std::move(wake))
    {
    }

    EventBuffer buffer;
    std::unique_ptr<ZuRest::OpenStream> source; // last: its destructor ends the reports
};

IHttpService::~IHttpService() = default;

HttpConnection::HttpConnection(IHttpService& owningService, Strand newStrand, HttpClient newClient)
    : service(owningService),
      limits(service.Limits()),
      strand(std::move(newStrand)),
      peer(std::move(newClient)),
      timer(strand),
      reader(service.Gatekeeper(), peer, service.Budget())
{
}

HttpConnection::~HttpConnection()
{
    service.Forget(*this);
}

/// Runs `step`, the body of a handler. Closes the connection if the step throws.
template <typename Step>
void HttpConnection::Guarded(Step&& step) noexcept
{
    if (!ZU_GUARD_BOUNDARY(std::forward<Step>(step)))
    {
        ZU_GUARD_BOUNDARY([this] { DoClose(); });
    }
}

template <typename Step>
void HttpConnection::OnStrand(Step step)
{
    asio::dispatch(strand, [self = shared_from_this(), step = std::move(step)]() mutable { self->Guarded(step); });
}

// In the order in which a request passes through it.

void HttpConnection::Start(std::optional<Answer> refusal)
{
    OnStrand([this, refusal = std::move(refusal)]() mutable {
        heldRefusal = std::move(refusal);
        Enter(Phase::HANDSHAKE, limits.requestTimeoutUsec);
        firstDue = due;
        StartHandshake();
    });
}

void HttpConnection::OnHandshake(error_code const& error)
{
    Guarded([&] {
        if (error || phase != Phase::HANDSHAKE)
        {
            DoClose();
        }
        else if (heldRefusal.has_value())
        {
            Send(std::move(*heldRefusal), true);
        }
        else
        {
            BeginRequest();
        }
    });
}

void HttpConnection::OnRefusedHandshake(std::string sentence)
{
    Guarded([&] {
        heldRefusal = Refusal(HttpStatus::BAD_REQUEST, Zu::Status::BAD_FORMAT, std::move(sentence));
        OnHandshake({});
    });
}

void HttpConnection::Enter(Phase newPhase, uint64 timeoutUsec)
{
    phase = newPhase;
    due = Clock::now() + std::chrono::microseconds(std::min(timeoutUsec, LONGEST_TIMEOUT_USEC));
    if (!hasRequested && (phase == Phase::IDLE || phase == Phase::REQUEST))
    {
        due = std::min(due, firstDue);
    }
    idle.Note(IsIdle());
    if (due < timerDue)
    {
        SetTimer();
    }
}

/// Whether the connection may be closed for a further client: the server has nothing to do for this one.
bool HttpConnection::IsIdle() const
{
    return phase == Phase::HANDSHAKE || phase == Phase::IDLE || phase == Phase::REQUEST || phase == Phase::DELAY ||
           phase == Phase::LINGER;
}

/// Sets the timer for the earliest deadline so far. When it fires, it checks the present deadline. Most phases end long
/// before their deadlines, so they do not set the timer.
void HttpConnection::SetTimer()
{
    timerDue = due;
    timer.expires_at(due);
    timer.async_wait([self = shared_from_this()](error_code const& error) {
        if (!error)
        {
            self->Guarded([&self] { self->OnTimer(); });
        }
    });
}

void HttpConnection::OnTimer()
{
    if (phase == Phase::CLOSED)
    {
        return;
    }
    timerDue = Clock::time_point::max();
    if (Clock::now() < due)
    {
        SetTimer();
    }
    else
    {
        PassDeadline();
    }
}

void HttpConnection::PassDeadline()
{
    switch (phase)
    {
    case Phase::REQUEST:
        Send(Refusal(HttpStatus::REQUEST_TIMEOUT, Zu::Status::TIME_OUT, "The request did not come in time."), true);
        break;
    case Phase::DELAY:
        Send(std::move(*heldRefusal), true);
        break;
    case Phase::ANSWER:
        isWanted.store(false, std::memory_order_relaxed);
        Send(Refusal(HttpStatus::SERVICE_UNAVAILABLE, Zu::Status::BUSY, "The resource did not answer in time."), true);
        break;
    case Phase::STREAM:
        KeepStream();
        break;
    default:
        DoClose();
        break;
    }
}

void HttpConnection::BeginRequest()
{
    reader.Begin();
    Enter(Phase::IDLE, limits.idleTimeoutUsec);
    reader.HasBytes() ? ParseRequest() : Read();
}

void HttpConnection::Read()
{
    if (isReading)
    {
        return;
    }
    isReading = true;
    if (phase != Phase::IDLE && phase != Phase::REQUEST)
    {
        reader.Discard();
    }
    StartRead(reader.Room());
}

void HttpConnection::OnRead(error_code const& error, std::size_t count)
{
    isReading = false;
    Guarded([&] {
        switch (phase)
        {
        case Phase::IDLE:
        case Phase::REQUEST:
            TakeBytes(error, count);
            break;
        case Phase::STREAM:
        case Phase::LINGER:
            ReadPast(error, count);
            break;
        case Phase::WRITE:
            if (next == Next::STREAM)
            {
                ReadPast(error, count);
            }
            break;
        default:
            break;
        }
    });
}

void HttpConnection::TakeBytes(error_code const& error, std::size_t count)
{
    if (!error)
    {
        reader.Commit(count);
        ParseRequest();
    }
    else if (error == asio::error::eof && reader.TakeEnd())
    {
        Send(reader.TakeRefusal(), true);
    }
    else
    {
        DoClose();
    }
}

void HttpConnection::ParseRequest()
{
    bool const hadHeader = reader.HasHeader();
    switch (reader.Parse())
    {
    case RequestReader::Result::NEEDS_BYTES:
        if ((phase == Phase::IDLE && reader.HasBegun()) || reader.HasHeader() != hadHeader)
        {
            Enter(Phase::REQUEST, limits.requestTimeoutUsec);
        }
        Read();
        break;
    case RequestReader::Result::NEEDS_CONTINUE:
        head = "HTTP/1.1 100 Continue\r\n\r\n";
        body.clear();
        Write(Next::BODY);
        break;
    case RequestReader::Result::REQUEST:
        Submit();
        break;
    case RequestReader::Result::REFUSAL:
        Send(reader.TakeRefusal(), true);
        break;
    case RequestReader::Result::WRONG_TOKEN:
        DelayRefusal();
        break;
    }
}

void HttpConnection::DelayRefusal()
{
    heldRefusal = reader.TakeRefusal();
    if (uint64 const delayUsec = service.NoteWrongToken(peer.source); delayUsec != 0)
    {
        Enter(Phase::DELAY, delayUsec);
    }
    else
    {
        Send(std::move(*heldRefusal), true);
    }
}

void HttpConnection::Submit()
{
    hasRequested = true;
    Enter(Phase::ANSWER, limits.answerTimeoutUsec);
    ZuRest::Request request = reader.TakeRequest();
    caller = request.caller;
    request.isWanted = [this] {
        return isWanted.load(std::memory_order_relaxed);
    }; // the asking thread shares this object
    service.Process(shared_from_this(), std::move(request));
}

ZuRest::IStreamReceiver& HttpConnection::MakeReceiver(bool isState)
{
    stream = std::make_shared<EventStream>(isState, WakeForStream());
    return stream->buffer;
}

/// Lets the connection send what a stream has. Any thread may call the result.
std::function<void()> HttpConnection::WakeForStream()
{
    return [strand = strand, weak = weak_from_this()] {
        asio::post(strand, [weak] {
            if (auto const self = weak.lock())
            {
                self->Guarded([&self] { self->Flush(); });
            }
        });
    };
}

void HttpConnection::TakeOutcome(Outcome outcome)
{
    OnStrand([this, outcome = std::move(outcome)]() mutable { ShowOutcome(std::move(outcome)); });
}

void HttpConnection::ShowOutcome(Outcome outcome)
{
    bool const isStream = outcome.stream != nullptr;
    if (isStream)
    {
        stream->source = std::move(outcome.stream);
    }
    if (phase != Phase::ANSWER)
    {
        EndStream(); // the client has received another answer or is gone
    }
    else if (isStream)
    {
        BeginStream(outcome.answer);
    }
    else if (outcome.answer.openBody && !reader.IsHead())
    {
        BeginBody(std::move(outcome.answer));
    }
    else
    {
        Send(std::move(outcome.answer), !reader.KeepsAlive() || isStopping);
    }
}

void HttpConnection::Send(Answer answer, bool isLast)
{
    bool const mayHaveBody = answer.status != HttpStatus::NO_CONTENT && answer.status != HttpStatus::NOT_MODIFIED;
    head.clear();
    AnswerHead::Append(head, answer, AnswerHead::Date(), isLast,
                       mayHaveBody ? std::optional<uint64>(answer.body.size()) : std::nullopt);
    body = mayHaveBody && !reader.IsHead() ? std::move(answer.body) : std::string();
    Write(isLast ? Next::END : Next::REQUEST);
}

/// Writes `head` and `body`.
void HttpConnection::Write(Next newNext)
{
    Enter(Phase::WRITE, limits.writeTimeoutUsec);
    next = newNext;
    StartWrite({asio::buffer(head), asio::buffer(body)});
}

void HttpConnection::OnWritten(error_code const& error)
{
    Guarded([&] {
        if (error)
        {
            DoClose();
        }
        else if (phase == Phase::WRITE)
        {
            GoOn();
        }
    });
}

void HttpConnection::GoOn()
{
    if (next == Next::STREAM)
    {
        Enter(Phase::STREAM, limits.commentPeriodUsec);
        if (hasNews)
        {
            Flush();
        }
    }
    else if (next == Next::BODY)
    {
        Enter(Phase::REQUEST, limits.requestTimeoutUsec);
        ParseRequest();
    }
    else if (next == Next::END || isStopping)
    {
        EndSending();
        Enter(Phase::LINGER, isStopping ? STOP_LINGER_USEC : LINGER_USEC);
        Read();
    }
    else
    {
        BeginRequest();
    }
}

/// Reads and discards bytes that follow the last request. Closing a socket with unread bytes discards sent data that
/// the client has not received yet, so bytes after the last answer are read up to a bound. During a stream the client
/// sends no request: if it ends its side, the stream ends.
void HttpConnection::ReadPast(error_code const& error, std::size_t count)
{
    discardedBytes += count;
    if (error || (phase == Phase::LINGER && discardedBytes > MAX_LINGER_BYTES))
    {
        DoClose();
    }
    else
    {
        Read();
    }
}

void HttpConnection::BeginStream(Answer const& answer)
{
    head.clear();
    AnswerHead::Append(head, answer, AnswerHead::Date(), true, std::nullopt); // it ends with the connection
    body.clear();
    Write(Next::STREAM);
    Read();
}

/// The body ends with the connection, or for a client of HTTP/1.1 with its last chunk.
void HttpConnection::BeginBody(Answer answer)
{
    parts = std::make_shared<BodyBuffer>(reader.IsVersion11(), WakeForStream());
    if (reader.IsVersion11())
    {
        answer.headers.emplace_back("Transfer-Encoding", "chunked");
    }
    BeginStream(answer);
    answer.openBody(parts);
}

void HttpConnection::Flush()
{
    hasNews = phase != Phase::STREAM; // a pending write flushes when it ends
    if (hasNews)
    {
        return;
    }
    if (parts != nullptr)
    {
        if (BodyBuffer::Piece piece = parts->Take(); piece.isLast || !piece.bytes.empty())
        {
            WriteToStream(std::move(piece.bytes), piece.isLast);
        }
    }
    else if (std::string text = stream->buffer.Take(); !text.empty())
    {
        WriteToStream(std::move(text), false);
    }
}

void HttpConnection::WriteToStream(std::string text, bool isLast)
{
    if (!MayRead())
    {
        DoClose();
        return;
    }
    head = std::move(text);
    body.clear();
    Write(isLast ? Next::END : Next::STREAM);
}

/// Sends a comment, which shows whether the client is still there. The maker of a body in parts does that itself.
void HttpConnection::KeepStream()
{
    if (parts != nullptr)
    {
        Enter(Phase::STREAM, limits.commentPeriodUsec);
    }
    else
    {
        WriteToStream(": still here\n\n", false);
    }
}

/// Whether the token or the session with which the stream was opened has not ended.
bool HttpConnection::MayRead() const
{
    return caller == nullptr || service.Gatekeeper().IsCurrent(*caller);
}

void HttpConnection::ReviewStream()
{
    OnStrand([this] {
        if (next == Next::STREAM && !MayRead())
        {
            DoClose();
        }
    });
}

void HttpConnection::EndStream()
{
    if (stream != nullptr)
    {
        service.RunLater([held = std::move(stream)]() mutable { held.reset(); }); // the resource may block
    }
}

void HttpConnection::BeginStop()
{
    OnStrand([this] {
        isStopping = true;
        bool const isUnderWay = phase == Phase::ANSWER || (phase == Phase::WRITE && next != Next::STREAM);
        if (!isUnderWay)
        {
            DoClose();
        }
    });
}

void HttpConnection::Close()
{
    OnStrand([this] { DoClose(); });
}

void HttpConnection::CloseIfIdle()
{
    OnStrand([this] {
        if (IsIdle())
        {
            DoClose();
        }
    });
}

void HttpConnection::DoClose()
{
    if (phase == Phase::CLOSED)
    {
        return;
    }
    phase = Phase::CLOSED;
    idle.Note(false); // it makes no room twice
    isWanted.store(false, std::memory_order_relaxed);
    CloseStream();
    timer.cancel();
    if (parts != nullptr)
    {
        parts->Close();
    }
    if (next == Next::STREAM)
    {
        EndStream();
    }
}

} // namespace ZuHost
