#pragma once

#include "Plugins/ModbusTcp/ModbusRequest.h"

#include <string>
#include <vector>

namespace ModbusTcp
{

/// Registers that hold their own address, and coils 0, 2 and 15 that are 1. Writes to the coils and to the first registers
/// succeed but change nothing. Records its calls.
class FakeRegisterModel final : public IRegisterModel
{
public:
    uint32 RegisterCount() const override
    {
        return 10000;
    }

    void Read(uint16 first, std::span<uint16> registers) override
    {
        calls.push_back("read " + std::to_string(first) + " " + std::to_string(registers.size()));
        for (std::size_t i = 0; i < registers.size(); ++i)
        {
            registers[i] = static_cast<uint16>(first + i);
        }
    }

    ModbusException Write(uint16 first, std::span<uint16 const> values) override
    {
        std::string call = "write " + std::to_string(first) + ":";
        for (uint16 const value : values)
        {
            call += " " + std::to_string(value);
        }
        calls.push_back(call);
        if (refusal != ModbusException::NONE)
        {
            return refusal;
        }
        return first + values.size() <= writable ? ModbusException::NONE : ModbusException::ILLEGAL_DATA_ADDRESS;
    }

    ModbusException MaskWrite(uint16 address, uint16 andMask, uint16 orMask) override
    {
        calls.push_back("mask " + std::to_string(address) + ": " + std::to_string(andMask) + " " +
                        std::to_string(orMask));
        return address < writable ? refusal : ModbusException::ILLEGAL_DATA_ADDRESS;
    }

    uint16 ReadCoils() override
    {
        calls.emplace_back("coils");
        return coils;
    }

    ModbusException WriteCoils(uint16 ones) override
    {
        calls.push_back("write coils: " + std::to_string(ones));
        return refusal;
    }

    MapIdentity Identity() override
    {
        return identity;
    }

    MapIdentity identity{"assembly-7", 10, 0x0BC04A21, "default"};
    std::vector<std::string> calls;
    uint16 coils = 0x8005;
    ModbusException refusal = ModbusException::NONE;
    std::size_t writable = 66;
};

} // namespace ModbusTcp
