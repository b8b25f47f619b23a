#include "ZuControl/ControlProtocol/UpdateBlockNewParams.h"

#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

namespace ZuControl::ControlProtocol
{

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

} // namespace ZuControl::ControlProtocol
