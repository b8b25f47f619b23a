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

/// The HTTP server of the host: gives the requests of clients to the resources and their answers to the clients.
///
/// It is asynchronous: a few threads run one I/O context, and each connection has a strand. The same threads carry out
/// the requests, all but one thread at a time, so that resources that block never hold up the I/O (RequestQueue).
/// Everything that a client can occupy is bounded: connections, headers, bodies, reports that wait for a slow reader,
/// and the time of each phase.
/// Ownership: the processor and the resources behind it outlive the server.
/// Threads: "Http.Worker0" and so on, from `Start` to `Stop`. One thread at a time calls the operations.
class HttpServer final
{
public:
    static constexpr uint64 THREADS = 4; ///< one of them is always left for the I/O
    static constexpr uint32 MAX_HEADER_BYTES = 16 * 1024;
    static constexpr uint64 MAX_BODY_BYTES = 1024 * 1024;

    struct Settings
    {
        std::string address = "127.0.0.1"; ///< of this machine, as a number: IPv4 or IPv6
        uint16 port = 8080;                ///< 0 takes a free one
        std::string token;                 ///< asked for on everything but GET /health; empty: nothing is asked for
        uint64 maxConnections = 512;       ///< a further one is answered 503 and closed

        uint64 idleTimeoutUsec = 60'000'000;    ///< between two requests: the connection is closed
        uint64 requestTimeoutUsec = 10'000'000; ///< for the header, and again for the body: 408
        uint64 answerTimeoutUsec = 60'000'000;  ///< for the resource: 503
        uint64 writeTimeoutUsec = 30'000'000;   ///< for a client to take what it is sent: the connection is closed
        uint64 commentPeriodUsec = 15'000'000;  ///< a stream without news sends a comment so often
        uint64 stopPatienceUsec = 5'000'000;    ///< for the requests that are under way when the server stops
    };

    explicit HttpServer(ZuRest::ResourceRequestProcessor& usedProcessor);
    ~HttpServer(); ///< stops

    HttpServer(HttpServer const&) = delete;
    HttpServer& operator=(HttpServer const&) = delete;

    /// Throws `Zu::Status::BAD_ARGUMENT`, with a sentence that says what to do, for a text that is no address and for
    /// an address that may not be used without a token.
    static void Check(Settings const& settings);

    /// Takes the address. Clients that connect are answered once `Start` has been called. Throws, each with a sentence
    /// and without having taken anything: as `Check` does; `BAD_ARGUMENT` for an address of another machine, `BUSY` for
    /// a port that is taken, `FAILURE` for another failure of the system. Throws `WRONG_STATE` while it listens.
    void Listen(Settings const& settings);

    /// Answers clients from now on. Throws `Zu::Status::WRONG_STATE` unless it listens and has not been started; throws
    /// when the system has no thread left, and then still listens.
    void Start();

    /// Takes no more requests, lets those under way end, ends the streams and closes every connection. Waits for
    /// resources that are running, also beyond the patience. Does nothing when it does not listen. No resource may call
    /// it.
    void Stop() noexcept;

    /// Where it listens, with the true port: "127.0.0.1:8080", "[::1]:8080". Empty while it does not listen.
    std::string Endpoint() const;

    uint16 Port() const; ///< the true port; 0 while it does not listen

private:
    class Core;

    ZuRest::ResourceRequestProcessor& processor;
    std::unique_ptr<Core> core; // while it listens
};

} // namespace ZuHost
