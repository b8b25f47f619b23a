#pragma once

#include "Plugins/Common/ClientCounters.h"

namespace ModbusTcp
{

using PluginCommon::Count;

/// What the server has done since the last reset.
struct ServerCounters final : PluginCommon::ClientCounters
{
    std::atomic<uint64> exceptions{0}; ///< requests that were refused

    void Reset();
};

} // namespace ModbusTcp
