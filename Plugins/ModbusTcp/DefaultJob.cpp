#include "Plugins/ModbusTcp/DefaultJob.h"

#include "Plugins/ModbusTcp/AssemblyLock.h"
#include "Plugins/ModbusTcp/ModbusBlocks.h"
#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

namespace ModbusTcp
{

namespace
{

struct DefaultBlock
{
    char const* type;
    uint16 outputId;
    char const* dataSource;
};

constexpr DefaultBlock DEFAULT_BLOCKS[] = {
    {TYPE_CONTROL_INPUT, 0, ""},
    {TYPE_CONTROL_OUTPUT, 66, ""},
    {TYPE_SYSTEM, 68, ""},
    {TYPE_SCANNER, 140, ""},
    {TYPE_STAMP, 150, "profile/stamp"},
    {TYPE_MEASUREMENT, 170, "profile/zMax"},
    {TYPE_MEASUREMENT, 173, "profile/zMin"},
    {TYPE_MEASUREMENT, 176, "profile/width"},
    {TYPE_MEASUREMENT, 179, "profile/meanZ"},
    {TYPE_MEASUREMENT, 182, "profile/points"},
};

} // namespace

void ConfigureDefaultJob(ZuControl::ControlProtocol::IProtocolRegisterAssembly& assembly)
{
    ZuControl::ControlProtocol::AddBlockParams params;
    for (DefaultBlock const& block : DEFAULT_BLOCKS)
    {
        auto& added = params.blocks.Add();
        added.type.Set(block.type);
        added.outputId.Set(block.outputId);
        added.dataSource.Set(block.dataSource);
    }
    AssemblyLock const guard(assembly);
    assembly.ResetRegisterAssembly();
    assembly.Add(params);
}

} // namespace ModbusTcp
