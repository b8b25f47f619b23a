#pragma once

#include "ZuApi/Params/Value.h"
#include "ZuControl/ControlProtocol/BlockOrder.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <memory>
#include <string>

namespace ModbusTcp
{

/// The arguments of a new block, with its order.
struct ModbusBlockParams final : public ZuControl::ControlProtocol::RegisterBlockParams,
                                 public ZuControl::ControlProtocol::IOrderChoice
{
    ModbusBlockParams();
    ~ModbusBlockParams() override;

    std::string const& OrderName() const override;

    Zu::Params::Value<std::string> order; ///< empty: the order of the service
};

/// The blocks to add.
struct ModbusAddBlockParams final : public ZuControl::ControlProtocol::AddBlockParams
{
    ModbusAddBlockParams();
    ~ModbusAddBlockParams() override;
};

/// The block to change, and its new values, with its order.
struct ModbusUpdateBlockParams final : public ZuControl::ControlProtocol::UpdateBlockParams,
                                       public ZuControl::ControlProtocol::IOrderChoice
{
    ModbusUpdateBlockParams();
    ~ModbusUpdateBlockParams() override;

    std::string const& OrderName() const override;

    Zu::Params::Value<std::string> order; ///< a member of `newParams` for clients; empty: the order stays
};

/// The actions by which clients change the assembly of the service.
class ModbusAssemblyActions : public ZuControl::ControlProtocol::ProtocolRegisterAssemblyActionTarget
{
public:
    using ProtocolRegisterAssemblyActionTarget::ProtocolRegisterAssemblyActionTarget;

    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& actionId) const override;
};

} // namespace ModbusTcp
