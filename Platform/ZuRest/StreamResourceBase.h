#pragma once

#include "ZuRest/IStreamableResource.h"

namespace ZuRest
{

/// The streaming interface of a resource with its start event. It is no `IResource`, so that a class can derive from it
/// and from a resource base. The derived class returns it from `StreamableProvider`.
class ZUPLATFORM_API StreamResourceBase : public IStreamableResource
{
public:
    StreamResourceBase();
    ~StreamResourceBase() override;

    StreamResourceBase(StreamResourceBase const&) = delete;
    StreamResourceBase& operator=(StreamResourceBase const&) = delete;

    StartNotification& StartEvent() override;

private:
    StartNotification startEvent;
};

} // namespace ZuRest
