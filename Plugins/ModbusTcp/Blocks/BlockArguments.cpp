#include "Plugins/ModbusTcp/Blocks/BlockArguments.h"

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

namespace
{

constexpr char const* KEY_ORDER = "order";
constexpr char const* TITLE_ORDER = "Order";

} // namespace

ModbusBlockParams::ModbusBlockParams()
{
    Register(KEY_ORDER, TITLE_ORDER, order);
}

ModbusBlockParams::~ModbusBlockParams()
{
    Deregister(KEY_ORDER); // before the member, to which the base class refers, is destroyed
}

std::string const& ModbusBlockParams::OrderName() const
{
    return order.Get();
}

ModbusAddBlockParams::ModbusAddBlockParams() : AddBlockParams([] { return std::make_unique<ModbusBlockParams>(); })
{
}

ModbusAddBlockParams::~ModbusAddBlockParams() = default;

ModbusUpdateBlockParams::ModbusUpdateBlockParams()
{
    newParams.Register(KEY_ORDER, TITLE_ORDER, order);
}

ModbusUpdateBlockParams::~ModbusUpdateBlockParams()
{
    newParams.Deregister(KEY_ORDER); // before the member, to which `newParams` refers, is destroyed
}

std::string const& ModbusUpdateBlockParams::OrderName() const
{
    return order.Get();
}

std::shared_ptr<Zu::Params::Group> ModbusAssemblyActions::GetActionParams(std::string const& actionId) const
{
    if (actionId == REGISTER_ASSEMBLY_ACTION_ID_ADD)
    {
        return std::make_shared<ModbusAddBlockParams>();
    }
    if (actionId == REGISTER_ASSEMBLY_ACTION_ID_UPDATE)
    {
        return std::make_shared<ModbusUpdateBlockParams>();
    }
    return ProtocolRegisterAssemblyActionTarget::GetActionParams(actionId);
}

} // namespace ModbusTcp
