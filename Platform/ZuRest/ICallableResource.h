#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuRest
{

struct RequestInfo;

/// The interface of a resource that can be called. A call counts as a change: no other request of its place runs
/// meanwhile.
class ZUPLATFORM_API ICallableResource
{
public:
    /// Executes the call with the arguments in `body`, an empty object if the request has no body. Runs on the thread
    /// that processes the request. Null means an answer without a body. An exception becomes a problem document.
    virtual nlohmann::json Invoke(RequestInfo const& request,
                                  nlohmann::json const& body) = 0; // slot order is part of the plug-in interface

    virtual ~ICallableResource(); // after the other slot, which keeps its place
};

} // namespace ZuRest
