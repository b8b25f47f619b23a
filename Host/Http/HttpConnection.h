#pragma once

#include "Host/Http/IIoUser.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "wApi/wTypes.h"

#include <memory>
#include <string>

namespace ZuRest
{
class IStreamReceiver;
}

namespace ZuHost
{

class Descriptor;
class IHttpService;

/// One client, from the accept to the close. It belongs to the I/O thread, but for what is said otherwise.
class HttpConnection : public IIoUser
{
public:
    /// The service outlives it. The socket does not block, and its user of all events, edge-triggered, is the connection.
    static std::shared_ptr<HttpConnection> Make(IHttpService& service, Descriptor socket);

    ~HttpConnection() override;

    /// Waits for the first request.
    virtual void Begin() = 0;

    /// Sends this problem, `code` as the status of an exception, and closes.
    virtual void Refuse(uint32 status, int32 code, std::string detail) = 0;

    /// Makes the receiver of the stream that its request is about to begin. Called on the thread that carries that out.
    virtual ZuRest::IStreamReceiver& MakeReceiver(bool isState) = 0;

    /// What came of its request.
    virtual void TakeOutcome(ZuRest::ResourceRequestProcessor::Outcome outcome) = 0;

    /// Sends the answer that it has said to the service to be ready.
    virtual void SendNow() = 0;

    /// Does what is due when a phase has lasted too long.
    virtual void CheckDeadline(uint64 nowUsec) = 0;

    /// Closes, at once or, when a request is under way, behind its answer.
    virtual void BeginStop() = 0;

    virtual void Close() = 0;
};

} // namespace ZuHost
