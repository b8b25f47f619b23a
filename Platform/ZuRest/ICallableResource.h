#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuRest
{

struct RequestInfo;

/// The face of a resource that can be called. A call counts as a change: it comes alone.
class ZUPLATFORM_API ICallableResource
{
public:
    /// Carries out the call with the arguments of `body`, an empty object when the client gave none. Null for no answer.
    virtual nlohmann::json Invoke(RequestInfo const& request,
                                  nlohmann::json const& body) = 0; // the first slot: never move

    virtual ~ICallableResource(); // behind the other, which keeps its place
};

} // namespace ZuRest
