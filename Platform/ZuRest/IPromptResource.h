#pragma once

#include "wApi/wExport.h"

namespace ZuRest
{

/// Marks a resource whose documents are at hand: reading one must not block, neither in a plug-in nor on a lock that is held
/// for long. The server reads such a resource on a thread that does I/O, beside whatever else runs at its place, so that it
/// is answered while other requests occupy all threads that they may have. A resource derives from it beside its other bases.
class ZUPLATFORM_API IPromptResource
{
public:
    virtual ~IPromptResource();
};

} // namespace ZuRest
