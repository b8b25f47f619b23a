#pragma once

#include "Host/Http/HttpServer.h"
#include "ZuRest/Request.h"

#include <functional>
#include <memory>

namespace ZuHost
{

class HttpConnection;

/// What a connection needs of its server. It is called on the I/O thread, but for `Post`.
class IHttpService
{
public:
    virtual ~IHttpService();

    virtual HttpServer::Settings const& Limits() const = 0;

    /// Whether none but this machine can reach it.
    virtual bool IsLocal() const = 0;

    /// The time as the header Date has it.
    virtual std::string const& Date() const = 0;

    /// The moment of wTime, as the I/O thread has seen it last.
    virtual uint64 NowUsec() const = 0;

    /// Whether no further request is taken.
    virtual bool IsStopping() const = 0;

    /// Has the request carried out; the client gets the outcome on the I/O thread, perhaps before this returns. By then the
    /// calling thread is perhaps not the I/O thread any more: it touches nothing of the client.
    virtual void Process(std::shared_ptr<HttpConnection> const& client, ZuRest::Request request) = 0;

    /// Has the client send its answer: now, or in a moment together with those of the others that are waiting for theirs.
    virtual void SendSoon(std::shared_ptr<HttpConnection> const& client) = 0;

    /// Runs a step that may take its time on another thread.
    virtual void RunLater(std::function<void()> step) = 0;

    /// Runs a step soon, on the I/O thread. Any thread may call.
    virtual void Post(std::function<void()> step) = 0;

    /// The connection is closed.
    virtual void Forget(std::shared_ptr<HttpConnection> const& connection) = 0;
};

} // namespace ZuHost
