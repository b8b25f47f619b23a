#include "ZuControl/ControlProtocol/UpdateBlockParams.h"

#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

namespace ZuControl::ControlProtocol
{

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
