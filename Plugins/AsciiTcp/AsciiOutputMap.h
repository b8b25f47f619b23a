#pragma once

#include "ZuControl/ControlProtocol/TextIdStandardProtocolOutputMap.h"
#include "wApi/wTypes.h"

namespace AsciiTcp
{

/// The output map of the service. A new job gives every protocol a cleared map; this one then holds the measurements of the
/// profile under short names, so that the first client of a new job has something to ask for.
class AsciiOutputMap final : public ZuControl::ControlProtocol::TextIdStandardProtocolOutputMap
{
public:
    static constexpr uint16 MOST_OUTPUTS = 1024;

    AsciiOutputMap(); ///< begins as the map of a new job
    ~AsciiOutputMap() override;

    /// Goes back to the map of a new job: meanZ, points, width, zMax and zMin, each the measurement of this name.
    void Clear() override;

    /// Leaves nothing.
    void RemoveAll();
};

} // namespace AsciiTcp
