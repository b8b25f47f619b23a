#pragma once

#include "Plugins/ModbusTcp/ModbusRequest.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <span>

namespace ModbusTcp
{

/// The device identification (function 43, interface 14). Basic objects: vendor, product code and revision. Regular
/// object: product name. Extended objects, by which a PLC checks what it is connected to: name, number of blocks and
/// fingerprint of the map, version of the fingerprint, and job. Offers stream access to the basic, the regular and the
/// extended objects, and individual access to each.
class DeviceIdentification final
{
public:
    static constexpr uint8 INTERFACE_TYPE = 14;

    /// Answers `request`, the protocol data unit after the function code, into `answer`, which begins at the same
    /// offset. `answerBytes` is set only if the result is NONE.
    static ModbusException Read(IRegisterModel& model, std::span<uint8 const> request, std::span<uint8> answer,
                                std::size_t& answerBytes);
};

} // namespace ModbusTcp
