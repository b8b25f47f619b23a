#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuRest
{

/// Takes the reports of one stream. Any thread may call; it neither blocks nor calls back into the resource.
class ZUPLATFORM_API IStreamReceiver
{
public:
    /// Sends one report to the client. May throw.
    virtual void Receive(nlohmann::json const& report) = 0; // the first slot: never move

    virtual ~IStreamReceiver(); // behind the other, which keeps its place
};

} // namespace ZuRest
