#pragma once

#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

namespace ModbusTcp
{

/// A known value in the test block.
struct OrderPattern
{
    std::string_view type; ///< the name of IEC 61131-3
    ZuControl::ControlProtocol::FieldType fieldType;
    char const* field; ///< the name in PLC files
    uint16 offset;     ///< of the first register
    uint16 registers;  ///< that the value takes
    uint64 bits;       ///< of a text, the first character is the most significant byte
    char const* shown; ///< by a master that reads in the right order
};

/// The known values in the order of their registers. All bytes of a value differ, and all registers of the block do, so
/// that each order shows another value.
std::span<OrderPattern const> OrderPatterns();

/// Registers: the known values, by which a person finds out how a master orders bytes. A text has two characters in a
/// register, and its registers have one order.
struct OrderTestBlock : public ZuControl::ControlProtocol::ProtocolRegisterBlock,
                        public ZuControl::ControlProtocol::IDescribedBlock
{
public:
    static constexpr char const* TYPE = "OrderTest";
    static constexpr uint16 REGISTERS = 24;

    OrderTestBlock(ZuControl::ControlProtocol::RegisterBlockParams const& params,
                   ZuControl::ControlProtocol::ProtocolRegisterBlockInfo& usedInfo);
    ~OrderTestBlock() override;

    /// `source` is a LayoutFacts. Throws `Zu::Status::WRONG_BUFFER_SIZE` for another size of source or destination.
    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override;

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override;
};

} // namespace ModbusTcp
