#include "ZuRest/ResourceBase.h"

namespace ZuRest
{

ResourceBase::ResourceBase() = default;
ResourceBase::~ResourceBase() = default;

IResource::Notification& ResourceBase::NotificationEvent()
{
    return notification;
}

IParentResource* ResourceBase::ParentProvider()
{
    return nullptr;
}

IDocumentResource* ResourceBase::DocumentProvider()
{
    return nullptr;
}

ICallableResource* ResourceBase::CallableProvider()
{
    return nullptr;
}

IStreamableResource* ResourceBase::StreamableProvider()
{
    return nullptr;
}

} // namespace ZuRest
