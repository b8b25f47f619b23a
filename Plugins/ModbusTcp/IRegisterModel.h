#pragma once

#include "Plugins/ModbusTcp/ModbusException.h"

#include <span>

namespace ModbusTcp
{

/// The registers behind the server. All operations come from the server's I/O thread and must not wait for a client.
class IRegisterModel
{
public:
    virtual ~IRegisterModel();

    /// Registers 0 to this number less one can be read.
    virtual uint32 RegisterCount() const = 0;

    /// Fills `registers` from `first` on, all of one moment. The range lies within RegisterCount.
    virtual void Read(uint16 first, std::span<uint16> registers) = 0;

    /// Takes one write request whole or not at all; what is refused changes nothing.
    virtual ModbusException Write(uint16 first, std::span<uint16 const> values) = 0;
};

} // namespace ModbusTcp
