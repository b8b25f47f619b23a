#pragma once

#include "wApi/wExport.h"

namespace ZuRest
{

/// Tells of a resource that its documents are at hand: to read one waits for nobody, no plug-in and no lock that is held for
/// long. So it is read also when every thread that may wait does, beside whatever else runs at its place, perhaps on the only
/// thread that is left for the I/O: one that waits after all stops the service. A resource has it by deriving from it beside
/// its other bases.
class ZUPLATFORM_API IPromptResource
{
public:
    virtual ~IPromptResource();
};

} // namespace ZuRest
