#pragma once

#include "wApi/wExport.h"

#include <nlohmann/json_fwd.hpp>

namespace ZuRest
{

/// Receives the reports of one stream. Any thread may call. `Receive` does not block and does not call the resource.
class ZUPLATFORM_API IStreamReceiver
{
public:
    /// Sends one report to the client. May throw.
    virtual void Receive(nlohmann::json const& report) = 0; // slot order is part of the plug-in interface

    virtual ~IStreamReceiver(); // after the other slot, which keeps its place
};

} // namespace ZuRest
