#pragma once

#include "wApi/wExport.h"

namespace ZuRest
{

/// Marks a resource with a document that clients can change, so that `Allow` names PUT and PATCH. A resource derives from it
/// as an additional base. Any thread may call.
class ZUPLATFORM_API IUpdatableResource
{
public:
    /// Whether clients can change the document of a complete path of the resource.
    virtual bool IsUpdatable() const noexcept = 0; // slot order is part of the plug-in interface

    virtual ~IUpdatableResource(); // after the other slots, which keep their places
};

} // namespace ZuRest
