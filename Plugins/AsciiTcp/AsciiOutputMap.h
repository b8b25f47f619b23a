#pragma once

#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "wApi/wTypes.h"

namespace AsciiTcp
{

/// The output map of the service. A new job clears the map of each protocol; this one then has the measurements of the
/// profile under short names, so that the first client can read results without configuration.
class AsciiOutputMap final : public ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap
{
public:
    static constexpr uint16 MOST_OUTPUTS = 1024;

    AsciiOutputMap(); ///< starts as the map of a new job
    ~AsciiOutputMap() override;

    /// Restores the map of a new job: meanZ, points, width, zMax and zMin, each the measurement of that name.
    void Clear() override;

    /// Empties the map.
    void RemoveAll();
};

} // namespace AsciiTcp
