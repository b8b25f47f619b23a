#pragma once

#include "wApi/wTypes.h"

#include <memory>
#include <string>

namespace ZuRest
{
class ResourceRequestProcessor;
}

namespace ZuHost
{

/// The HTTP server of the host: it gives requests to the resources and what they answer to the clients.
///
/// One thread at a time does the I/O of all clients, none of which can hold up another. It carries out reads by itself, and
/// hands the I/O on to another thread when one takes its time; the other requests have the other threads (WorkerPool). All
/// that a client can make it hold is bounded: connections, headers, bodies, what waits for a slow reader, and the time of
/// each phase.
/// Ownership: the processor and the resources behind it outlive the server. The operations belong to one thread at a time.
class HttpServer final
{
public:
    static constexpr uint32 MAX_HEADER_BYTES = 16 * 1024;
    static constexpr uint64 MAX_BODY_BYTES = 1024 * 1024;

    struct Settings
    {
        std::string address = "127.0.0.1"; ///< of this machine, as a number: IPv4 or IPv6
        uint16 port = 8080;                ///< 0 takes a free one
        std::string token;                 ///< asked for on everything but GET /health; empty: nothing is asked for
        uint64 maxConnections = 512;       ///< one more is told so and closed

        uint64 idleTimeoutUsec = 60'000'000;    ///< between two requests: the connection is closed
        uint64 requestTimeoutUsec = 10'000'000; ///< for the headers, and again for the body: 408
        uint64 answerTimeoutUsec = 60'000'000;  ///< for the resource: 503
        uint64 writeTimeoutUsec = 30'000'000;   ///< for a client to take what it is sent: the connection is closed
        uint64 commentPeriodUsec = 15'000'000;  ///< a stream without news sends a comment so often
        uint64 sweepPeriodUsec = 50'000;        ///< how often it looks for who is past his time
        uint64 stopPatienceUsec = 5'000'000;    ///< what is under way may end within it when the server stops
    };

    explicit HttpServer(ZuRest::ResourceRequestProcessor& usedProcessor);
    ~HttpServer(); ///< stops

    HttpServer(HttpServer const&) = delete;
    HttpServer& operator=(HttpServer const&) = delete;

    /// Throws -997 with a sentence that says what to do for an address that is none, or may not be used without a token.
    static void Check(Settings const& settings);

    /// Takes the address. Clients that come are answered once `Start` has been called. Throws, and nothing is taken, when it
    /// cannot: as `Check` does, -997 for an address that is none of this machine's, -976 for a port that is taken, 0 for
    /// another failure, each with a sentence. -1000 while it listens.
    void Listen(Settings const& settings);

    /// Answers clients from now on. Throws -1000 unless it listens and has not been started.
    void Start();

    /// Takes no more requests, lets those under way end, ends the streams and closes every connection. A resource that is
    /// running is waited for. Nothing happens when it does not listen. Not to be called by a resource.
    void Stop() noexcept;

    /// Where it listens, with the true port: "127.0.0.1:8080", "[::1]:8080". Empty while it does not.
    std::string Endpoint() const;

    uint16 Port() const; ///< the true one; 0 while it does not listen

private:
    class Core;

    ZuRest::ResourceRequestProcessor& processor;
    std::unique_ptr<Core> core; // while it listens
};

} // namespace ZuHost
