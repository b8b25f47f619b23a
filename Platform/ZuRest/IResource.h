#pragma once

#include "ZuApi/Event.h"
#include "ZuRest/EventType.h"
#include "wApi/wExport.h"

#include <string>

namespace ZuRest
{

class ICallableResource;
class IDocumentResource;
class IParentResource;
class IStreamableResource;

/// The object that answers the requests of a route. Each provider returns one interface of the resource, or null if the
/// resource does not have it. The resource owns the interfaces, which live as long as the resource.
class ZUPLATFORM_API IResource
{
public:
    using Notification = Zu::Event<IResource&, EventType, std::string const&>;

    /// Fires with this resource, the kind of change and the path of the change. Handlers are added before the first
    /// request.
    virtual Notification& NotificationEvent() = 0; // slot order is part of the plug-in interface

    virtual IParentResource* ParentProvider() = 0;
    virtual IDocumentResource* DocumentProvider() = 0;
    virtual ICallableResource* CallableProvider() = 0;
    virtual IStreamableResource* StreamableProvider() = 0;

    virtual ~IResource(); // after the other slots, which keep their places
};

} // namespace ZuRest
