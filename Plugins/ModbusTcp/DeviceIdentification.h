#pragma once

#include "Plugins/ModbusTcp/ModbusException.h"

#include <cstddef>
#include <span>

namespace ModbusTcp
{

/// What the device says of itself (function 43, interface 14): vendor, product code and revision as the basic objects, the
/// product's name as a regular one. Stream access to the basic and the regular objects, individual access to each.
class DeviceIdentification final
{
public:
    static constexpr uint8 INTERFACE_TYPE = 14;

    /// Answers `request`, the protocol data unit behind the function code, into `answer`, which begins at the same place.
    /// `answerBytes` is set when the answer is good.
    static ModbusException Read(std::span<uint8 const> request, std::span<uint8> answer, std::size_t& answerBytes);
};

} // namespace ModbusTcp
