// A protocol with numbered outputs: ids 0 to 200, at most 8 outputs.

#include "MappedProtocol.h"
#include "ZuControl/ControlProtocol/StandardProtocolOutputMap.h"
#include "ZuPlugin/PluginEntry.h"

namespace
{

struct TestNumericFactory final : ZuControl::IControlFactory
{
    static constexpr NumericMaps::Names NAMES{ZuControl::ZuEthernetProtocol{101}, "TestNumeric", "Test of Numbers"};

    std::shared_ptr<ZuControl::ControlProtocol::IProtocol>
    Create(ZuControl::ControlProtocol::ControlProtocolEnviron const& environ) override
    {
        using Map = ZuControl::ControlProtocol::StandardProtocolOutputMap;
        return std::make_shared<NumericMaps::MappedProtocol<Map>>(NAMES, environ, uint16{8}, uint16{0}, uint16{200});
    }
};

} // namespace

ZU_PLUGIN_ENTRY(NumericMaps::MappedPlugin<TestNumericFactory>::Make);
