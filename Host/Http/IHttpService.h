#pragma once

#include "Host/Http/HttpServer.h"
#include "ZuRest/Request.h"

#include <functional>
#include <memory>

namespace ZuHost
{

class HttpConnection;

/// What a connection needs of its server, which outlives it. All operations are thread-safe.
class IHttpService
{
public:
    virtual ~IHttpService();

    virtual HttpServer::Settings const& Limits() const = 0;

    /// Whether only clients of this machine reach the server.
    virtual bool IsLocal() const = 0;

    /// Carries out a request of `client`. Calls `HttpConnection::TakeOutcome` once, on any thread, perhaps within this call.
    virtual void Process(std::shared_ptr<HttpConnection> const& client, ZuRest::Request request) = 0;

    /// Runs `step`, which may block, among the requests.
    virtual void RunLater(std::function<void()> step) = 0;

    /// The connection is being destroyed.
    virtual void Forget(HttpConnection& connection) noexcept = 0;
};

} // namespace ZuHost
