#pragma once

#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "ZuControl/ControlProtocol/ProtocolOutputActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyActionTarget.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyBase.h"
#include "ZuControl/ControlProtocol/ProtocolRegisterAssemblyGroup.h"

namespace ZuFuzz
{

struct MapParams final : public Zu::Params::Group
{
    MapParams() : Group("")
    {
        Register("number", "Number", number).EnableMaximum(true).GetMaximum().Set(100);
        Register("factor", "Factor", factor);
        Register("text", "Text", text);
        Register("fixed", "Fixed", fixed).EnableReadOnly().readOnly.Set(true);
        SetDefaults();
    }

    void SetDefaults()
    {
        number.Set(7);
        factor.Set(0.5);
        text.Set("");
        fixed.Set("as it was born");
    }

    Zu::Params::Value<uint32> number;
    Zu::Params::Value<double> factor;
    Zu::Params::Value<std::string> text;
    Zu::Params::Value<std::string> fixed;
};

/// A protocol without clients, for tests of its configuration: parameters, an output map of class `Map`, constructed
/// with `MAP_ARGUMENTS`, and a register assembly.
template <typename Map, uint16... MAP_ARGUMENTS>
class MapProtocol final : public ZuControl::ControlProtocol::ProtocolBase
{
public:
    MapProtocol(int32 number, char const* name, ZuControl::ControlProtocol::ControlProtocolEnviron const& environ)
        : ProtocolBase(ZuControl::ZuEthernetProtocol{number}, name, environ),
          map(MAP_ARGUMENTS...),
          mapActions(map),
          assembly(true, 0, ModbusTcp::LAST_REGISTER),
          assemblyActions(assembly)
    {
        metrics.Register("controlDrops", controlDrops);
        ModbusTcp::AddModbusBlockTypes(assembly);
        ModbusTcp::ConfigureDefaultJob(assembly);
        group.Add(assembly, assemblyActions);
        ZuControl::ControlProtocol::ProtocolInitParams init;
        init.params = &params;
        init.outputs = &map;
        init.outputsActionTarget = &mapActions;
        init.metricsData = &metrics;
        init.registerAssemblyGroup = &group;
        Init(init);
    }

    ~MapProtocol() override
    {
        CloseResultHandlerGate();
    }

    void Start() override
    {
        NotifyProtocolStatusUpdateEventHandler(ZuControl::ProtocolStatus::Running);
    }

    void Stop() override
    {
        NotifyProtocolStatusUpdateEventHandler(ZuControl::ProtocolStatus::Stopped);
    }

    void ParamsUpdate() override
    {
    }

    void ResetParams() override
    {
        params.SetDefaults();
    }

    void ConfigureDefaultRegisterAssembly() override
    {
        ModbusTcp::ConfigureDefaultJob(assembly);
    }

    void OutputsUpdate() override
    {
        NotifyOutputsInternalUpdateEventHandler(true);
    }

    void RegisterAssemblyUpdate(char const*) override
    {
    }

    Zu::Properties::Structure& UpdateMetrics() override
    {
        return metrics;
    }

    void ResetMetrics() override
    {
    }

private:
    MapParams params;
    Zu::Properties::Structure metrics{true};
    Zu::Properties::Value<uint64> controlDrops;
    Map map;
    ZuControl::ControlProtocol::ProtocolOutputActionTarget mapActions;
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyBase assembly;
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyActionTarget assemblyActions;
    ZuControl::ControlProtocol::ProtocolRegisterAssemblyGroup group;
};

} // namespace ZuFuzz
