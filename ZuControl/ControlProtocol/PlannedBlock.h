#pragma once

#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "ZuControl/ControlProtocol/Layout.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterBlockInfo.h"
#include "wApi/wTypes.h"

#include <optional>
#include <string>
#include <utility>

namespace ZuControl::ControlProtocol
{

/// Stands for a block type in a preview: a copy of what decides about the place of its blocks.
class PlannedType final
{
public:
    explicit PlannedType(ProtocolRegisterBlockInfo const& info)
        : type(info.Type()),
          displayName(info.DisplayName()),
          registerCount(info.RegisterCount()),
          leastInstances(info.MinInstanceCount()),
          mostInstances(info.MaxInstanceCount()),
          instances(info.InstanceCount()),
          hasDataSource(info.HasDataSource()),
          isGlobal(info.IsGlobalAddressSpaceUsed()),
          bytesPerRegister(info.BytesPerRegister()),
          order(ProtocolOrderOf(info)),
          isOrdered(dynamic_cast<IOrderedBlockType const*>(&info) != nullptr)
    {
    }

    std::string const& Type() const
    {
        return type;
    }

    std::string const& DisplayName() const
    {
        return displayName;
    }

    uint16 RegisterCount() const
    {
        return registerCount;
    }

    bool HasDataSource() const
    {
        return hasDataSource;
    }

    bool IsGlobal() const
    {
        return isGlobal;
    }

    uint8 BytesPerRegister() const
    {
        return bytesPerRegister;
    }

    /// The order of the protocol.
    BlockOrder Order() const
    {
        return order;
    }

    /// Whether blocks of the type may have an order of their own.
    bool IsOrdered() const
    {
        return isOrdered;
    }

    bool AtMaxInstance() const
    {
        return instances >= mostInstances;
    }

    bool AtMinInstance() const
    {
        return instances <= leastInstances;
    }

    void IncrementInstanceCount()
    {
        ++instances; // in 16 bits, as in the record
    }

    void DecrementInstanceCount()
    {
        --instances;
    }

private:
    std::string const type;
    std::string const displayName;
    uint16 const registerCount;
    uint16 const leastInstances;
    uint16 const mostInstances;
    uint16 instances;
    bool const hasDataSource;
    bool const isGlobal;
    uint8 const bytesPerRegister;
    BlockOrder const order;
    bool const isOrdered;
};

/// Stands for a block in a preview: its place and its texts.
class PlannedBlock final
{
public:
    PlannedBlock(PlannedType& usedType, LayoutEntry newEntry) : type(&usedType), entry(std::move(newEntry))
    {
    }

    std::string const& Type() const
    {
        return type->Type();
    }

    std::string const& DisplayName() const
    {
        return entry.displayName;
    }

    uint16 OutputId() const
    {
        return entry.outputId;
    }

    void SetOutputId(uint16 newOutputId)
    {
        entry.outputId = newOutputId;
    }

    uint16 RegisterCount() const
    {
        return type->RegisterCount();
    }

    uint16 EndAddress() const
    {
        return type->IsGlobal() ? static_cast<uint16>(entry.outputId - 1 + type->RegisterCount()) : entry.outputId;
    }

    uint8 BytesPerRegister() const
    {
        return type->BytesPerRegister();
    }

    bool IsOrdered() const
    {
        return type->IsOrdered();
    }

    /// The order of the registers: the block's own, else that of the protocol.
    BlockOrder Order() const
    {
        return ownOrder.value_or(type->Order());
    }

    void SetOwnOrder(std::optional<BlockOrder> newOrder)
    {
        ownOrder = newOrder;
    }

    bool HasDataSource() const
    {
        return type->HasDataSource();
    }

    bool AtMinInstance() const
    {
        return type->AtMinInstance();
    }

    void IncrementInstanceCount()
    {
        type->IncrementInstanceCount();
    }

    void DecrementInstanceCount()
    {
        type->DecrementInstanceCount();
    }

    void SetScannerId(std::string const& newScannerId)
    {
        entry.scannerId = newScannerId;
    }

    void SetDisplayName(std::string const& newDisplayName)
    {
        entry.displayName = newDisplayName;
    }

    void SetDataSource(std::string const& newDataSource)
    {
        entry.source = newDataSource;
    }

    LayoutEntry const& Entry() const
    {
        return entry;
    }

private:
    PlannedType* type;
    LayoutEntry entry;
    std::optional<BlockOrder> ownOrder;
};

} // namespace ZuControl::ControlProtocol
