#pragma once

#include "Host/Http/HttpServer.h"
#include "ZuRest/ResourceRequestProcessor.h"

#include <functional>
#include <memory>

namespace ZuHost
{

class HttpConnection;

/// What a connection needs of its server. It is called on the I/O thread.
class IHttpService
{
public:
    virtual ~IHttpService();

    virtual HttpServer::Settings const& Limits() const = 0;

    /// Whether none but this machine can reach it.
    virtual bool IsLocal() const = 0;

    /// The time as the header Date has it.
    virtual std::string const& Date() const = 0;

    /// Whether no further request is taken.
    virtual bool IsStopping() const = 0;

    /// Has the request carried out; `done` gets the outcome on the I/O thread.
    virtual void Process(ZuRest::Request request, ZuRest::ResourceRequestProcessor::ReceiverMaker makeReceiver,
                         std::function<void(ZuRest::ResourceRequestProcessor::Outcome)> done) = 0;

    /// Runs a step that may take its time on another thread.
    virtual void RunLater(std::function<void()> step) = 0;

    /// The connection is closed.
    virtual void Forget(std::shared_ptr<HttpConnection> const& connection) = 0;
};

} // namespace ZuHost
