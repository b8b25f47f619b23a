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

/// What answers the requests of a route. Each provider gives one face of the resource, or null when it has none; a face is the
/// resource's and lives as long.
class ZUPLATFORM_API IResource
{
public:
    using Notification = Zu::Event<IResource&, EventType, std::string const&>;

    /// Fires with this resource, what happened and the path that it happened to. Handlers are added before the first request.
    virtual Notification& NotificationEvent() = 0; // first of the slots that others call through: never move one

    virtual IParentResource* ParentProvider() = 0;
    virtual IDocumentResource* DocumentProvider() = 0;
    virtual ICallableResource* CallableProvider() = 0;
    virtual IStreamableResource* StreamableProvider() = 0;

    virtual ~IResource(); // behind the others, which keep their places
};

} // namespace ZuRest
