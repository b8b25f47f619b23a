// A protocol with outputs in registers: 50 registers from address 100, two bytes each, at most 16 outputs.

#include "MappedProtocol.h"
#include "ZuControl/ControlProtocol/RegisterProtocolOutputMap.h"
#include "ZuPlugin/PluginEntry.h"

namespace
{

struct TestRegisterFactory final : ZuControl::IControlFactory
{
    static constexpr NumericMaps::Names NAMES{ZuControl::ZuEthernetProtocol{102}, "TestRegister", "Test of Registers"};

    std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
    Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ) override
    {
        using Map = ZuControl::ControlProtocol::RegisterProtocolOutputMap;
        return std::make_shared<NumericMaps::MappedProtocol<Map>>(NAMES, environ, uint16{100}, uint16{50}, uint16{2},
                                                                  uint16{20});
    }
};

} // namespace

ZU_PLUGIN_ENTRY(NumericMaps::MappedPlugin<TestRegisterFactory>::Make);
