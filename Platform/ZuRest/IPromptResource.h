#pragma once

#include "wApi/wExport.h"

namespace ZuRest
{

/// Marks a resource that shows its document without waiting. A resource derives from it as an additional base.
///
/// Reading the document must not block: no waiting for a plug-in, and no lock that is held for long. The server reads
/// it on an I/O thread, concurrently with other requests of its place, so that it answers while other requests occupy
/// all worker threads. A read that blocks holds up the I/O of other clients.
class ZUPLATFORM_API IPromptResource
{
public:
    virtual ~IPromptResource();
};

} // namespace ZuRest
