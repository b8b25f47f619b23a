#pragma once

#include "ZuControl/ControlProtocol/RegisterField.h"
#include "wApi/wTypes.h"

#include <vector>

namespace ModbusTcp
{

/// Adds to each field that is one bit of a register a field for the discrete input that shows the same: input 16 r + b
/// is bit b of register r as it is sent. `outputId` is the first register of the block.
std::vector<ZuControl::ControlProtocol::RegisterField>
WithInputs(std::vector<ZuControl::ControlProtocol::RegisterField> fields, uint16 outputId, bool areBytesSwapped);

} // namespace ModbusTcp
