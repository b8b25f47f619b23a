#include "ZuControl/ControlProtocol/RegisterBlockIdParams.h"

#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

namespace ZuControl::ControlProtocol
{

RegisterBlockIdParams::RegisterBlockIdParams() : Group(""), outputId(RegisterBlockParams::NO_OUTPUT_ID)
{
    Register("outputId", "Output Id", outputId).EnableMinimum(true).SetMinimum(0);
}

RegisterBlockIdParams::~RegisterBlockIdParams()
{
    Deregister("outputId");
}

} // namespace ZuControl::ControlProtocol
