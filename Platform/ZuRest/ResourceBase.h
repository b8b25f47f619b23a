#pragma once

#include "ZuRest/IResource.h"

namespace ZuRest
{

/// A resource that has no face yet: a derived class shows those that it has.
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
