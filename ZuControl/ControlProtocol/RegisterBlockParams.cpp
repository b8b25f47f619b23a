#include "ZuControl/ControlProtocol/RegisterBlockParams.h"

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

} // namespace ZuControl::ControlProtocol
