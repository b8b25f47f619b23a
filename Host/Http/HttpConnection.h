#pragma once

#include "Host/Http/HttpServer.h"
#include "Host/Http/IdleClock.h"
#include "Host/Http/RequestReader.h"
#include "ZuApi/Guard.h"
#include "ZuRest/Request.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "wApi/wTypes.h"

#include <utility> // before Asio's headers, which use it without including it

#include <boost/asio/basic_waitable_timer.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/strand.hpp>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ZuRest
{
class IStreamReceiver;
}

namespace ZuHost
{

class BodyBuffer;
class ByteBudget;
class HttpConnection;
class IGatekeeper;

/// The server as its connections see it. It outlives them. All operations are thread-safe.
class IHttpService
{
public:
    virtual ~IHttpService();

    virtual HttpServer::Settings const& Limits() const = 0;

    /// Decides which requests are carried out.
    virtual IGatekeeper& Gatekeeper() = 0;

    /// For the bytes behind the headers of the requests of all connections.
    virtual ByteBudget& Budget() = 0;

    /// Notes a request of `source` with a wrong token. Returns the time for which its refusal waits.
    virtual uint64 NoteWrongToken(boost::asio::ip::address const& source) = 0;

    /// Notes a TLS handshake with `source` that failed for `reason`, a part of a sentence.
    virtual void NoteHandshakeFault(boost::asio::ip::address const& source, std::string const& reason) = 0;

    /// Carries out a request of `client`. Calls `HttpConnection::TakeOutcome` once, on any thread, perhaps within this
    /// call.
    virtual void Process(std::shared_ptr<HttpConnection> const& client, ZuRest::Request request) = 0;

    /// Runs `step`, which may block, among the requests.
    virtual void RunLater(std::function<void()> step) = 0;

    /// The connection is being destroyed.
    virtual void Forget(HttpConnection& connection) noexcept = 0;
};

/// The connection of one client, from the accept to the close: its phases with their deadlines, and its answers.
///
/// The class has no socket. The derived classes `HttpSession` and `TlsSession` have the stream: they execute the reads and
/// writes that this class starts and report their results.
/// Ownership: the pending operations of the connection share it, and so does a request that is being carried out.
/// Threads: all data belongs to the strand. The public operations are thread-safe and continue on the strand.
class HttpConnection : public std::enable_shared_from_this<HttpConnection>
{
public:
    using Strand = boost::asio::strand<boost::asio::io_context::executor_type>;
    using Outcome = ZuRest::ResourceRequestProcessor::Outcome;

    virtual ~HttpConnection(); ///< calls `IHttpService::Forget`

    HttpConnection(HttpConnection const&) = delete;
    HttpConnection& operator=(HttpConnection const&) = delete;

    /// Waits for the first request. With a refusal, sends the refusal and closes.
    void Start(std::optional<ZuRest::Answer> refusal);

    /// Makes the receiver of the stream that the present request is about to begin. Called by the thread that carries
    /// out the request; the receiver outlives the stream.
    ZuRest::IStreamReceiver& MakeReceiver(bool isState);

    /// Sends the outcome of the present request.
    void TakeOutcome(Outcome outcome);

    /// Closes at once, or after the answer if a request is under way.
    void BeginStop();

    /// Closes at once.
    void Close();

    /// Closes the connection if it has a stream whose caller may not read it any more.
    void ReviewStream();

    /// Closes at once, unless the connection is busy.
    void CloseIfIdle();

    /// Runs except from the end of a request to the end of its answer.
    IdleClock& Idle() noexcept
    {
        return idle;
    }

    /// The address of the client, as limits count it.
    boost::asio::ip::address const& Source() const noexcept
    {
        return peer.source;
    }

protected:
    using Buffers = std::array<boost::asio::const_buffer, 2>;

    HttpConnection(IHttpService& owningService, Strand newStrand, HttpClient newClient);

    IHttpService& Service() noexcept
    {
        return service;
    }

    // Operations of the stream. This class calls them on the strand.
    virtual void StartHandshake() = 0;                            ///< ends with `OnHandshake`
    virtual void StartRead(boost::asio::mutable_buffer room) = 0; ///< of some bytes; ends with `OnRead`
    virtual void StartWrite(Buffers const& buffers) = 0;          ///< of all bytes; ends with `OnWritten`
    virtual void EndSending() noexcept = 0;                       ///< the client reads the end of the stream
    virtual void CloseStream() noexcept = 0;                      ///< ends pending operations with an error

    // Ends of operations. The derived class calls them on the strand.
    void OnHandshake(boost::system::error_code const& error);
    void OnRefusedHandshake(std::string sentence); ///< writes a 400 with the sentence, and closes
    void OnRead(boost::system::error_code const& error, std::size_t count);
    void OnWritten(boost::system::error_code const& error);

private:
    using Clock = std::chrono::steady_clock;
    using Timer = boost::asio::basic_waitable_timer<Clock, boost::asio::wait_traits<Clock>, Strand>;

    enum class Phase
    {
        HANDSHAKE,
        IDLE,    // between two requests
        REQUEST, // header or body are being received
        DELAY,   // the refusal of a wrong token waits
        ANSWER,  // the request is being carried out
        WRITE,
        STREAM, // open, nothing to write
        LINGER, // everything is sent; the client reads it before the connection closes
        CLOSED
    };

    /// The step that follows a write.
    enum class Next
    {
        BODY,
        REQUEST,
        STREAM,
        END
    };

    struct EventStream;

    template <typename Step>
    void Guarded(Step&& step) noexcept;
    template <typename Step>
    void OnStrand(Step step);

    void Enter(Phase newPhase, uint64 timeoutUsec);
    bool IsIdle() const;
    void SetTimer();
    void OnTimer();
    void PassDeadline();
    void BeginRequest();
    void Read();
    void TakeBytes(boost::system::error_code const& error, std::size_t count);
    void ParseRequest();
    void DelayRefusal();
    void Submit();
    void ShowOutcome(Outcome outcome);
    void Send(ZuRest::Answer answer, bool isLast);
    void Write(Next newNext);
    void GoOn();
    void ReadPast(boost::system::error_code const& error, std::size_t count);
    void BeginStream(ZuRest::Answer const& answer);
    void BeginBody(ZuRest::Answer answer);
    std::function<void()> WakeForStream();
    void Flush();
    void WriteToStream(std::string text, bool isLast);
    void KeepStream();
    bool MayRead() const;
    void EndStream();
    void DoClose();

    IHttpService& service;
    HttpServer::Settings const& limits;
    Strand const strand;
    HttpClient const peer;
    IdleClock idle;

    Phase phase = Phase::HANDSHAKE;
    Next next = Next::REQUEST; // after the present or the last write
    bool isStopping = false;
    Timer timer;
    Clock::time_point due;                                 // of the phase
    Clock::time_point firstDue;                            // of the first request, from the accept to its last byte
    bool hasRequested = false;                             // the first request is complete
    Clock::time_point timerDue = Clock::time_point::max(); // of the timer: at or before `due`

    RequestReader reader;
    bool isReading = false; // a read is pending: the reader's room belongs to it
    uint64 discardedBytes = 0;

    std::shared_ptr<ZuRest::Caller const> caller; // of the present or last request
    std::optional<ZuRest::Answer> heldRefusal;    // sent behind the handshake or the delay
    std::string head;
    std::string body;

    std::atomic<bool> isWanted = true; // read by the thread that executes the request; publishes nothing else

    // From `Submit` to `TakeOutcome` this belongs to the thread that executes the request.
    std::shared_ptr<EventStream> stream;
    std::shared_ptr<BodyBuffer> parts; // of a body that comes in parts
    bool hasNews = false;              // reports or parts arrived during a write
};

} // namespace ZuHost
