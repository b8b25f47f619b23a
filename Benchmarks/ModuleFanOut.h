#pragma once

#include "ZuControl/Control/ControlScanResults.h"
#include "wApi/wTypes.h"

#include <string>
#include <utility>
#include <vector>

namespace ZuBench
{

/// The module's fan-out with a number of protocols, each with a client and a handler that does nothing.
class ModuleFanOut final
{
public:
    ModuleFanOut(uint64 receivers, std::vector<std::string> const& sources) : results(nullptr, nullptr)
    {
        for (uint64 i = 0; i < receivers; ++i)
        {
            auto const protocol = static_cast<ZuControl::ZuEthernetProtocol>(100 + i);
            results.AddResultHandler([](void*) {}, protocol);
            results.UpdateOutputMap(protocol, sources);
            results.UpdateClientCount(protocol, 1);
        }
    }

    void Process(ZuCore::ResultSet set)
    {
        results.ProcessResultSet(set);
    }

private:
    ZuControl::ControlScanResults results;
};

} // namespace ZuBench
