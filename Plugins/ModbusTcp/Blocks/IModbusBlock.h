#pragma once

#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <cstddef>
#include <optional>
#include <span>

namespace ModbusTcp
{

/// A block that encodes in the order of a layout; an additional base of its class.
///
/// The order of a block changes before the layout that has it is installed. A caller that encodes for a layout therefore
/// names the order. Nothing stands for the order of the service.
class IModbusBlock
{
public:
    using Order = std::optional<ZuControl::ControlProtocol::BlockOrder>;

    virtual ~IModbusBlock() = default;

    /// The order in which the block itself encodes.
    virtual Order PresentOrder() const = 0;

    /// As `ProtocolRegisterBlock::Serialize`.
    virtual void SerializeIn(Order order, std::span<uint8> bytes, void const* source, std::size_t sourceSize) = 0;

    /// Fills the bytes of a block with what it shows before its first result: the mark for a missing value, and 0 in
    /// all other bytes. The caller guarantees the size.
    virtual void WriteBlank(Order order, std::span<uint8> bytes) = 0;
};

/// The type of blocks in the order of the service; an additional base of its class.
///
/// Threads: the assembly's lock is held during a change. Any thread may encode meanwhile.
class ModbusBlockType : public ZuControl::ControlProtocol::IOrderedBlockType
{
public:
    bool AreBytesSwapped() const override
    {
        return areBytesSwapped.load(std::memory_order_relaxed);
    }

    void SetAreBytesSwapped(bool newAreBytesSwapped)
    {
        areBytesSwapped.store(newAreBytesSwapped, std::memory_order_relaxed);
    }

private:
    std::atomic<bool> areBytesSwapped{false}; // publishes no other data
};

} // namespace ModbusTcp
