#include "Plugins/ModbusTcp/OrderTestCommand.h"

#include "Plugins/ModbusTcp/OrderDiagnosis.h"
#include "ZuApi/Exception.h"
#include "ZuControl/ControlProtocol/LayoutCopy.h"

namespace ModbusTcp
{

using namespace ZuControl::ControlProtocol;

namespace
{

std::vector<OrderTestPlace> PlacesIn(IProtocolRegisterAssembly& assembly)
{
    std::vector<OrderTestPlace> places;
    for (LayoutEntry const& entry : ReadLayout(assembly).entries)
    {
        if (entry.type == OrderTestBlock::TYPE)
        {
            places.push_back({entry.outputId, {entry.isBigEndian, entry.areBytesSwapped}});
        }
    }
    return places;
}

} // namespace

OrderTestParams::OrderTestParams() : Group("")
{
    Register("address", "Address", address);
    Register("type", "Data Type", type);
    Register("shown", "Shown Values", shown);
}

OrderTestParams::~OrderTestParams()
{
    for (char const* const key : {"address", "type", "shown"})
    {
        Deregister(key); // before the members, to which the base class refers, are destroyed
    }
}

OrderTestResult::OrderTestResult(OrderFinding const& finding) : Group("")
{
    Register("isRight", "Right", isRight).Set(finding.isRight);
    Register("masterOrder", "Order of the Master", masterOrder).Set(finding.masterOrder);
    Register("answer", "Answer", answer).Set(finding.answer);
}

OrderTestResult::~OrderTestResult()
{
    for (char const* const key : {"isRight", "masterOrder", "answer"})
    {
        Deregister(key); // before the members, to which the base class refers, are destroyed
    }
}

OrderTestCommand::OrderTestCommand(IProtocolRegisterAssembly& usedAssembly) : assembly(usedAssembly)
{
}

OrderTestCommand::~OrderTestCommand() = default;

std::vector<ZuControl::ControlActionInfo> OrderTestCommand::ListActions() const
{
    return {{ORDER_TEST, "Order Test"}};
}

std::shared_ptr<Zu::Params::Group> OrderTestCommand::GetActionParams(std::string const& id) const
{
    if (id != ORDER_TEST)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "The action '%s' does not exist. No parameters available", id.c_str());
    }
    return std::make_shared<OrderTestParams>();
}

std::shared_ptr<Zu::Params::Group> OrderTestCommand::InvokeAction(std::string const& id, Zu::Params::Group const& args)
{
    if (id != ORDER_TEST)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "The action '%s' does not exist. Action ignored.", id.c_str());
    }
    PluginCommon::CheckTexts(args);
    auto const& params = dynamic_cast<OrderTestParams const&>(args);
    return std::make_shared<OrderTestResult>(
        Diagnose({params.address.Get(), params.type.Get(), params.shown.Get()}, PlacesIn(assembly)));
}

} // namespace ModbusTcp
