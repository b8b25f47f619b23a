#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuRest
{

struct RequestInfo;
class ResponseInfo;

/// The interface of a resource with a document. Reads of one place run concurrently, on different threads. A change
/// runs alone in its place.
class ZUPLATFORM_API IDocumentResource
{
public:
    /// Returns the document without links. The resource adds its links and embedded resources to `response`. Null
    /// counts as an empty object. An exception becomes a problem document.
    virtual nlohmann::json Document(RequestInfo const& request,
                                    ResponseInfo& response) = 0; // slot order is part of the plug-in interface

    /// Applies the changes in `document`. Throws `Zu::Status::NOT_UPDATABLE` if the document cannot be changed.
    virtual void UpdateDocument(RequestInfo const& request, nlohmann::json const& document) = 0;

    virtual ~IDocumentResource(); // after the other slots, which keep their places
};

} // namespace ZuRest
