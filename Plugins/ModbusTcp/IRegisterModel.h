#pragma once

#include "Plugins/ModbusTcp/ModbusException.h"

#include <span>

namespace ModbusTcp
{

/// The registers behind the server. All operations are called on the server's I/O thread and must not wait for a
/// client.
class IRegisterModel
{
public:
    virtual ~IRegisterModel();

    /// Registers 0 to RegisterCount() - 1 can be read.
    virtual uint32 RegisterCount() const = 0;

    /// Fills `registers` from `first` on with values of one moment. The range lies within RegisterCount.
    virtual void Read(uint16 first, std::span<uint16> registers) = 0;

    /// Carries out a write request completely or not at all. A refused request changes nothing.
    virtual ModbusException Write(uint16 first, std::span<uint16 const> values) = 0;
};

} // namespace ModbusTcp
