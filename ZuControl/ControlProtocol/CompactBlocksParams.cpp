#include "ZuControl/ControlProtocol/CompactBlocksParams.h"

#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

namespace ZuControl::ControlProtocol
{

CompactBlocksParams::CompactBlocksParams() : Group(""), startingOutputId(RegisterBlockParams::NO_OUTPUT_ID)
{
    Register("startingOutputId", "Starting Output Id", startingOutputId).EnableMinimum(true).SetMinimum(0);
}

CompactBlocksParams::~CompactBlocksParams()
{
    Deregister("startingOutputId");
}

} // namespace ZuControl::ControlProtocol
