#pragma once

#include "Plugins/ModbusTcp/Blocks/OrderTestBlock.h"
#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "wApi/wTypes.h"

#include <array>
#include <string>
#include <vector>

namespace ModbusTcp
{

/// An OrderTest block in the map.
struct OrderTestPlace
{
    uint16 first = 0; ///< its first register
    ZuControl::ControlProtocol::BlockOrder order;
};

/// What a master shows of an OrderTest block.
struct OrderQuestion
{
    uint32 address = 0; ///< as the master counts
    std::string type;   ///< the data type that is set in the master; empty for registers of 16 bits
    std::string shown;  ///< one value, or several that follow each other
};

/// How a master reads an OrderTest block.
struct OrderFinding
{
    bool isRight = false;
    std::string masterOrder; ///< empty if the values do not tell
    std::string answer;      ///< for a person: what the master does, and what to change
};

/// The registers of an OrderTest block as it sends them.
std::array<uint16, OrderTestBlock::REGISTERS> SentRegisters(ZuControl::ControlProtocol::BlockOrder order);

/// Finds the order in which a master reads from the values that it shows: decodes the registers of the block in each
/// order until the values are the same.
///
/// Throws `Zu::Status::WRONG_STATE` without a block, and `Zu::Status::BAD_ARGUMENT` for an unknown type, for values that
/// are none of the type, and for values that lie outside the blocks.
OrderFinding Diagnose(OrderQuestion const& question, std::vector<OrderTestPlace> const& places);

} // namespace ModbusTcp
