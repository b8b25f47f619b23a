#pragma once

#include "wApi/wTypes.h"

#include <memory>
#include <string>

namespace ZuRest
{
class ResourceRequestProcessor;
}

namespace ZuTls
{
class Context;
}

namespace ZuHost
{

class HandshakeFaults;
class IGatekeeper;
class WrongTokens;

/// The HTTP server of the host: passes the requests of clients to the resources, and the answers to the clients.
///
/// It is asynchronous: a few threads run one I/O context, and each connection has a strand. The same threads execute
/// the requests; one thread always stays free, so that blocking resources never hold up the I/O (see `RequestQueue`).
/// Every resource that a client can occupy is bounded: connections, the bytes of one request and of all together,
/// waiting reports of a slow client, and the time of each phase.
/// It has a listener for HTTP and may have one for HTTPS. Their connections share all bounds.
/// Ownership: the processor, the resources behind it and the gatekeeper outlive the server.
/// Threads: "Http.Worker0" and so on, from `Start` to `Stop`. One thread at a time calls the operations.
class HttpServer final
{
public:
    static constexpr uint64 THREADS = 4; ///< one of them is always free for the I/O
    static constexpr uint32 MAX_HEADER_BYTES = 16 * 1024;
    static constexpr uint64 MAX_BODY_BYTES = 1024 * 1024;
    static constexpr uint64 MAX_REQUEST_BYTES = 2 * MAX_BODY_BYTES; ///< with headers, chunk extensions and trailers
    static constexpr uint64 MAX_BYTES_IN_ALL = 64 * MAX_BODY_BYTES; ///< behind the headers of all present requests

    struct Settings
    {
        std::string address = "127.0.0.1";         ///< of this machine, as a number: IPv4 or IPv6
        uint16 port = 8080;                        ///< 0 takes a free one
        bool isInsecure = false;                   ///< HTTP may be offered beyond this machine, without encryption
        std::string httpsAddress;                  ///< of the listener for HTTPS; empty: there is none
        uint16 httpsPort = 0;                      ///< 0 takes a free one
        std::shared_ptr<ZuTls::Context const> tls; ///< for HTTPS: of the side of servers
        uint64 maxConnections = 512; ///< for a further connection an idle one is closed; 503 if none is idle

        uint64 idleTimeoutUsec = 60'000'000;    ///< between two requests: the connection is closed
        uint64 requestTimeoutUsec = 10'000'000; ///< for the header, and again for the body; for the whole first request
                                                ///< since the accept: 408, or the connection is closed
        uint64 answerTimeoutUsec = 60'000'000;  ///< for the resource: 503
        uint64 writeTimeoutUsec = 30'000'000;   ///< for a client to receive its answer: the connection is closed
        uint64 commentPeriodUsec = 15'000'000;  ///< a stream without reports sends a comment after this time
        uint64 stopPatienceUsec = 5'000'000;    ///< for running requests when the server stops
    };

    /// The processor and the gatekeeper outlive the server.
    HttpServer(ZuRest::ResourceRequestProcessor& usedProcessor, IGatekeeper& usedGatekeeper);
    ~HttpServer(); ///< stops

    HttpServer(HttpServer const&) = delete;
    HttpServer& operator=(HttpServer const&) = delete;

    /// Throws `Zu::Status::BAD_ARGUMENT` for a text that is no address and for an address that requires encryption. The
    /// text of the exception tells the user what to do. `tls` may be null here.
    static void Check(Settings const& settings);

    /// Binds the addresses and listens. Clients can connect, but get answers only after `Start`. Throws as `Check` does;
    /// `Zu::Status::BAD_ARGUMENT` for an address of another machine, `Zu::Status::BUSY` for a port in use,
    /// `Zu::Status::FAILURE` for another failure of the system, each with a sentence for the user. Throws
    /// `Zu::Status::WRONG_STATE` if the server listens already. After a throw nothing has changed.
    void Listen(Settings const& settings);

    /// Answers clients from now on. Throws `Zu::Status::WRONG_STATE` unless the server listens and has not been
    /// started. Throws if the system cannot start a thread; the server then still listens.
    void Start();

    /// Accepts no more requests, lets running requests end, ends the streams and closes every connection. Waits for
    /// running resources, even beyond `stopPatienceUsec`. Does nothing if the server does not listen. No resource may
    /// call it.
    void Stop() noexcept;

    /// The address with the real port: "127.0.0.1:8080", "[::1]:8080". Empty while the server does not listen.
    std::string Endpoint() const;

    /// Whether only this machine reaches the listener for HTTP. The server must listen.
    bool IsPlainLocal() const;

    /// As `Endpoint`, of the listener for HTTPS. Empty if there is none.
    std::string EncryptedEndpoint() const;

    /// Whether only this machine reaches the server. The server must listen.
    bool IsLocal() const;

    /// HTTPS connections that are accepted from now on use `tls`. Present ones stay. Does nothing without a listener for
    /// HTTPS. Any thread may call between `Listen` and `Stop`.
    void SetTls(std::shared_ptr<ZuTls::Context const> const& tls);

    /// The number of requests with a wrong secret since the server was made. Any thread may call.
    uint64 WrongTokenCount() const;

    uint16 Port() const;          ///< the real port; 0 while the server does not listen
    uint16 EncryptedPort() const; ///< as `Port`, of the listener for HTTPS; 0 if there is none

private:
    class Core;

    ZuRest::ResourceRequestProcessor& processor;
    IGatekeeper& gatekeeper;
    std::unique_ptr<WrongTokens> const wrongTokens;
    std::unique_ptr<HandshakeFaults> const handshakeFaults;
    std::unique_ptr<Core> core; // exists while the server listens
};

} // namespace ZuHost
