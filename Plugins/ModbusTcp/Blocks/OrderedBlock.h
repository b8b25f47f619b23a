#pragma once

#include "Plugins/ModbusTcp/Blocks/DiscreteInputs.h"
#include "Plugins/ModbusTcp/Blocks/IModbusBlock.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultBlockFields.h"
#include "ZuControl/ControlProtocol/DefaultRegisterBlocks/DefaultMeasurementRegisterBlocks.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlock.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockFactory.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "ZuControl/ControlProtocol/ProtocolScanOutputRegisterBlock.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"
#include "ZuControl/ControlProtocol/RegisterField.h"
#include "wApi/wTypes.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <concepts>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace ModbusTcp
{

/// Exchanges the two bytes of each register.
inline void SwapBytes(std::span<uint8> bytes)
{
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
    {
        std::swap(bytes[i], bytes[i + 1]);
    }
}

template <typename Base>
class OrderedBlock;

/// A type of blocks that may have an order of their own.
///
/// A block takes the order of its registers from its type. So the type has two more blocks without a place, each of a
/// type with a fixed order: a block with an order of its own lets one of them encode.
template <typename Base>
class OrderedBlockType final : public ZuControl::ControlProtocol::ProtocolRegisterBlockInfo, public ModbusBlockType
{
public:
    using Params = ZuControl::ControlProtocol::RegisterBlockInfoParams;

    explicit OrderedBlockType(Params params)
        : ProtocolRegisterBlockInfo(WithFactory(params)), bigEndian(params, true), littleEndian(params, false)
    {
    }

    /// The block that encodes in this order. It has no state: any thread may use it.
    Base& Encoder(bool isBigEndian)
    {
        return isBigEndian ? bigEndian.block : littleEndian.block;
    }

private:
    struct FixedOrder
    {
        FixedOrder(Params const& params, bool isBigEndian)
            : type(WithOrder(params, isBigEndian)), block(ZuControl::ControlProtocol::RegisterBlockParams(), type)
        {
        }

        ProtocolRegisterBlockInfo type;
        Base block;
    };

    static Params WithFactory(Params params)
    {
        params.factory =
            std::make_shared<ZuControl::ControlProtocol::ProtocolRegisterBlockFactory<OrderedBlock<Base>>>();
        return params;
    }

    static Params WithOrder(Params params, bool isBigEndian)
    {
        params.isProtocolBigEndian = isBigEndian;
        return params;
    }

    FixedOrder bigEndian;
    FixedOrder littleEndian;
};

struct NoDescription
{
};

/// The base for the description of a block whose class has none.
template <typename Base>
using DescriptionFor = std::conditional_t<std::derived_from<Base, ZuControl::ControlProtocol::IDescribedBlock>,
                                          NoDescription, ZuControl::ControlProtocol::IDescribedBlock>;

/// A block of class `Base` that may have an order of its own. With swapped bytes, the bytes of all its registers are
/// swapped, those of texts and of numbers in one register too.
///
/// Threads: the order changes under the assembly's lock; any thread may encode meanwhile.
template <typename Base>
class OrderedBlock final : public Base,
                           public DescriptionFor<Base>,
                           public ZuControl::ControlProtocol::IOrderedBlock,
                           public IModbusBlock
{
public:
    using BlockOrder = ZuControl::ControlProtocol::BlockOrder;
    using BlockParams = ZuControl::ControlProtocol::RegisterBlockParams;
    using BlockInfo = ZuControl::ControlProtocol::ProtocolRegisterBlockInfo;

    static constexpr bool IS_MEASUREMENT =
        std::derived_from<Base, ZuControl::ControlProtocol::DefaultMeasurementValueRegisterBlock> ||
        std::derived_from<Base, ZuControl::ControlProtocol::DefaultMeasurementDecisionRegisterBlock>;

    OrderedBlock(BlockParams const& params, BlockInfo& usedInfo) requires(!IS_MEASUREMENT) : Base(params, usedInfo)
    {
        RegisterOrder();
    }

    OrderedBlock(BlockParams const& params, BlockInfo& usedInfo) requires IS_MEASUREMENT
        : ZuControl::ControlProtocol::ProtocolScanOutputRegisterBlock(params, usedInfo), // a virtual base
          Base(params, usedInfo)
    {
        RegisterOrder();
    }

    ~OrderedBlock() override
    {
        this->Deregister(KEY); // before the member, to which the base class refers, is destroyed
    }

    void Serialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override
    {
        SerializeIn(OwnOrder(), {static_cast<uint8*>(destination), destinationSize}, source, sourceSize);
    }

    void SerializeIn(std::optional<BlockOrder> order, std::span<uint8> bytes, void const* source,
                     size_t sourceSize) override
    {
        EncoderFor(order).Base::Serialize(bytes.data(), bytes.size(), source, sourceSize);
        SwapIn(order, bytes);
    }

    void Deserialize(void* destination, size_t destinationSize, void const* source, size_t sourceSize) override
    {
        std::array<uint8, MOST_INPUT_BYTES> bytes;
        if (!AreBytesSwapped(OwnOrder()) || source == nullptr || sourceSize > bytes.size())
        {
            Base::Deserialize(destination, destinationSize, source, sourceSize);
            return;
        }
        std::copy_n(static_cast<uint8 const*>(source), sourceSize, bytes.begin());
        SwapBytes(std::span(bytes).first(sourceSize));
        Base::Deserialize(destination, destinationSize, bytes.data(), sourceSize);
    }

    void WriteBlank(std::optional<BlockOrder> order, std::span<uint8> bytes) override
    {
        std::ranges::fill(bytes, uint8{0});
        Base& encoder = EncoderFor(order);
        if constexpr (requires { encoder.SerializeInvalidMeasurementValue(bytes.data(), 0); })
        {
            encoder.SerializeInvalidMeasurementValue(bytes.data(), 0);
        }
        SwapIn(order, bytes);
    }

    std::vector<ZuControl::ControlProtocol::RegisterField> Fields() const override
    {
        std::vector<ZuControl::ControlProtocol::RegisterField> fields;
        if constexpr (std::derived_from<Base, ZuControl::ControlProtocol::IDescribedBlock>)
        {
            fields = Base::Fields();
        }
        else
        {
            fields = ZuControl::ControlProtocol::DefaultFields(static_cast<Base const&>(*this));
        }
        if (std::optional<BlockOrder> const own = OwnOrder())
        {
            for (auto& field : fields)
            {
                field.order = own;
            }
        }
        return WithInputs(std::move(fields), this->OutputId(), AreBytesSwapped(OwnOrder()));
    }

    std::optional<BlockOrder> OwnOrder() const override
    {
        uint8 const present = ownOrder.load(std::memory_order_relaxed);
        return present == 0
                   ? std::nullopt
                   : std::optional(BlockOrder{(present & HIGH_REGISTER_FIRST) != 0, (present & BYTES_SWAPPED) != 0});
    }

    std::optional<BlockOrder> PresentOrder() const override
    {
        return OwnOrder();
    }

    void SetOwnOrder(std::optional<BlockOrder> newOrder) override
    {
        orderName.Set(newOrder.has_value() ? ZuControl::ControlProtocol::NameOf(*newOrder) : "");
        ownOrder.store(newOrder.has_value()
                           ? static_cast<uint8>(OWN_ORDER | (newOrder->isBigEndian ? HIGH_REGISTER_FIRST : 0) |
                                                (newOrder->areBytesSwapped ? BYTES_SWAPPED : 0))
                           : uint8{0},
                       std::memory_order_relaxed);
    }

private:
    static constexpr char const* KEY = "order";
    static constexpr std::size_t MOST_INPUT_BYTES = 132; // of the control input, the only block that is written
    static constexpr uint8 OWN_ORDER = 1;
    static constexpr uint8 HIGH_REGISTER_FIRST = 2;
    static constexpr uint8 BYTES_SWAPPED = 4;

    void RegisterOrder()
    {
        this->Register(KEY, "Order", orderName).EnableReadOnly().readOnly.Set(true);
    }

    OrderedBlockType<Base>& UsedType() const
    {
        return static_cast<OrderedBlockType<Base>&>(this->info);
    }

    /// The block that encodes in this order; its operations are called without a look at the order.
    Base& EncoderFor(std::optional<BlockOrder> order)
    {
        return order.has_value() ? UsedType().Encoder(order->isBigEndian) : *this;
    }

    bool AreBytesSwapped(std::optional<BlockOrder> order) const
    {
        return order.has_value() ? order->areBytesSwapped : UsedType().AreBytesSwapped();
    }

    void SwapIn(std::optional<BlockOrder> order, std::span<uint8> bytes) const
    {
        if (AreBytesSwapped(order))
        {
            SwapBytes(bytes);
        }
    }

    Zu::Params::Value<std::string> orderName; // as in the arguments; empty for the order of the service
    std::atomic<uint8> ownOrder{0};           // the same for threads that encode; publishes no other data
};

} // namespace ModbusTcp
