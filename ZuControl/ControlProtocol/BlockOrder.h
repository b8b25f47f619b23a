#pragma once

#include "ZuControl/Export.h"

#include <optional>
#include <string>

namespace ZuControl::ControlProtocol
{

struct ProtocolRegisterBlockInfo;

/// The order of the bytes of a block's numbers in registers of two bytes.
///
/// Masters name the orders by the bytes of a 32-bit number, A the most significant, in the order in which they receive
/// them: ABCD, CDAB, BADC and DCBA.
struct BlockOrder
{
    bool isBigEndian = true;      ///< the most significant register comes first
    bool areBytesSwapped = false; ///< in each register the least significant byte comes first

    bool operator==(BlockOrder const&) const = default;

    static BlockOrder const ABCD;
    static BlockOrder const CDAB;
    static BlockOrder const BADC;
    static BlockOrder const DCBA;
};

inline constexpr BlockOrder BlockOrder::ABCD{true, false};
inline constexpr BlockOrder BlockOrder::CDAB{false, false};
inline constexpr BlockOrder BlockOrder::BADC{true, true};
inline constexpr BlockOrder BlockOrder::DCBA{false, true};

/// The order of the protocol in blocks of this type.
BlockOrder ProtocolOrderOf(ProtocolRegisterBlockInfo const& type);

/// The name of an order.
ZUCONTROL_API char const* NameOf(BlockOrder order);

/// A block that may have an order of its own; an additional base of its class.
///
/// Threads: both operations are called with the assembly's lock held. A protocol's thread may encode meanwhile.
class ZUCONTROL_API IOrderedBlock
{
public:
    IOrderedBlock() noexcept;

    /// Nothing for the order of the protocol.
    virtual std::optional<BlockOrder> OwnOrder() const = 0;
    virtual void SetOwnOrder(std::optional<BlockOrder> newOrder) = 0;

    virtual ~IOrderedBlock(); // after the other slots, which keep their places
};

/// Declares that the blocks of a type are ordered blocks; an additional base of the type.
class ZUCONTROL_API IOrderedBlockType
{
public:
    IOrderedBlockType() noexcept;
    virtual ~IOrderedBlockType();

    /// Whether in the order of the protocol each register has its least significant byte first. Called with the
    /// assembly's lock held. Returns false unless overridden.
    virtual bool AreBytesSwapped() const;
};

/// Declares that the arguments of a block can choose its order; an additional base of the record of arguments.
class ZUCONTROL_API IOrderChoice
{
public:
    /// Stands for the order of the protocol.
    static constexpr char const* DEFAULT = "default";

    IOrderChoice() noexcept;

    /// The name of an order, or `DEFAULT`. The empty text chooses nothing.
    virtual std::string const& OrderName() const = 0;

    virtual ~IOrderChoice(); // after the other slot, which keeps its place
};

/// The order that the arguments of a block choose.
struct ChosenOrder
{
    bool isChosen = false;
    std::optional<BlockOrder> order; ///< nothing for the order of the protocol
};

/// The choice of an `IOrderChoice`; null chooses nothing. Throws `Zu::Status::BAD_ARGUMENT` for an unknown name.
ZUCONTROL_API ChosenOrder ReadChoice(IOrderChoice const* choice);

} // namespace ZuControl::ControlProtocol
