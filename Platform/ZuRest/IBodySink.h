#pragma once

#include "wApi/wExport.h"

#include <string>

namespace ZuRest
{

/// The body of an answer that comes in parts, as its maker sees it. The server implements it. Any thread may call; no
/// operation blocks.
class ZUPLATFORM_API IBodySink
{
public:
    virtual ~IBodySink();

    /// Whether the client is still there and the body has not ended.
    virtual bool IsOpen() const = 0;

    /// Whether no part waits for the client. A maker that sends only then holds no more than one part for a slow client.
    virtual bool IsReady() const = 0;

    /// Sends a part behind those that wait. Does nothing unless the body is open.
    virtual void Send(std::string part) = 0;

    /// Ends the body behind the parts that wait.
    virtual void End() = 0;
};

} // namespace ZuRest
