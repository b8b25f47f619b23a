#pragma once

#include "ZuRest/IResource.h"

namespace ZuRest
{

/// A resource without any interface: every provider returns null. Derived classes override the providers that they
/// need.
class ZUPLATFORM_API ResourceBase : public IResource
{
public:
    ResourceBase();
    ~ResourceBase() override;

    ResourceBase(ResourceBase const&) = delete;
    ResourceBase& operator=(ResourceBase const&) = delete;

    Notification& NotificationEvent() override;
    IParentResource* ParentProvider() override;
    IDocumentResource* DocumentProvider() override;
    ICallableResource* CallableProvider() override;
    IStreamableResource* StreamableProvider() override;

private:
    Notification notification;
};

} // namespace ZuRest
