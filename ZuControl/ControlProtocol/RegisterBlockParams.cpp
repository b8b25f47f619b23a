#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

#include <utility>

namespace ZuControl::ControlProtocol
{

RegisterBlockParams::RegisterBlockParams() : Group(""), outputId(NO_OUTPUT_ID)
{
    Register("type", "Register Block Type", type);
    Register("dataSource", "Scan Output Data Source", dataSource);
    Register("scannerId", "Scanner Id", scannerId);
    Register("displayName", "Display Name", displayName);
    Register("outputId", "Output Id", outputId).EnableMinimum(true).SetMinimum(0);
}

RegisterBlockParams::~RegisterBlockParams()
{
    for (char const* const key : {"type", "dataSource", "scannerId", "displayName", "outputId"})
    {
        Deregister(key);
    }
}

RegisterBlockIdParams::RegisterBlockIdParams() : Group(""), outputId(RegisterBlockParams::NO_OUTPUT_ID)
{
    Register("outputId", "Output Id", outputId).EnableMinimum(true).SetMinimum(0);
}

RegisterBlockIdParams::~RegisterBlockIdParams()
{
    Deregister("outputId");
}

AddBlockParams::AddBlockParams() : AddBlockParams([] { return std::make_unique<RegisterBlockParams>(); })
{
}

AddBlockParams::AddBlockParams(std::function<std::unique_ptr<RegisterBlockParams>()> makeBlock)
    : Group(""), blocks(std::move(makeBlock))
{
    Register("blocks", "Register Block Parameters List", blocks);
    Register("autoShift", "Auto Shift Blocks On Output id Overlap", autoShift);
}

AddBlockParams::~AddBlockParams()
{
    for (char const* const key : {"blocks", "autoShift"})
    {
        Deregister(key);
    }
}

CompactBlocksParams::CompactBlocksParams() : Group(""), startingOutputId(RegisterBlockParams::NO_OUTPUT_ID)
{
    Register("startingOutputId", "Starting Output Id", startingOutputId).EnableMinimum(true).SetMinimum(0);
}

CompactBlocksParams::~CompactBlocksParams()
{
    Deregister("startingOutputId");
}

RemoveBlockParams::RemoveBlockParams() : Group("")
{
    Register("outputIdList", "Output Id List", outputIdList);
}

RemoveBlockParams::~RemoveBlockParams()
{
    Deregister("outputIdList");
}

UpdateBlockNewParams::UpdateBlockNewParams() : Group(""), outputId(RegisterBlockParams::NO_OUTPUT_ID)
{
    Register("dataSource", "Data Source", dataSource);
    Register("scannerId", "Scanner Id", scannerId);
    Register("displayName", "Display Name", displayName);
    Register("outputId", "Output Id", outputId).EnableMinimum(true).SetMinimum(0);
}

UpdateBlockNewParams::~UpdateBlockNewParams()
{
    for (char const* const key : {"dataSource", "scannerId", "displayName", "outputId"})
    {
        Deregister(key);
    }
}

UpdateBlockParams::UpdateBlockParams() : Group(""), outputId(RegisterBlockParams::NO_OUTPUT_ID)
{
    Register("outputId", "Output Id", outputId).EnableMinimum(true).SetMinimum(0);
    Register("autoShift", "Auto Shift Blocks On Output id Overlap", autoShift);
    Register("newParams", "New Parameters For Output Id", newParams);
}

UpdateBlockParams::~UpdateBlockParams()
{
    for (char const* const key : {"outputId", "autoShift", "newParams"})
    {
        Deregister(key);
    }
}

} // namespace ZuControl::ControlProtocol
