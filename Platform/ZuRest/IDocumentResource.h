#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuRest
{

struct RequestInfo;
class ResponseInfo;

/// The face of a resource that shows a document. Reads of one part of the tree come side by side; a change comes alone.
class ZUPLATFORM_API IDocumentResource
{
public:
    /// The document, without its links: what it belongs to is said to `response`. Null counts as an empty one.
    virtual nlohmann::json Document(RequestInfo const& request,
                                    ResponseInfo& response) = 0; // the first slot: never move

    /// Takes over what `document` says. Throws -983 where nothing can be changed.
    virtual void UpdateDocument(RequestInfo const& request, nlohmann::json const& document) = 0;

    virtual ~IDocumentResource(); // behind the others, which keep their places
};

} // namespace ZuRest
