#pragma once

#include "ZuRest/IStreamableResource.h"

namespace ZuRest
{

/// The streaming side of a resource. It is no resource by itself, so that it can stand beside a base that is: the derived
/// class gives it out through `StreamableProvider`.
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
