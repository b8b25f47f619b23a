#include "Plugins/AsciiTcp/AsciiParams.h"

#include "Plugins/AsciiTcp/AsciiText.h"

namespace AsciiTcp
{

AsciiParams::AsciiParams() : TcpParams(DEFAULT_PORT)
{
    Register("decimals", "Digits Behind the Point", decimals);
    Bound(decimals, 0, MOST_DECIMALS);
    RegisterLimits();
    AsciiParams::SetDefaults();
}

AsciiParams::~AsciiParams()
{
    Deregister("decimals"); // before the member, to which the base class refers, is destroyed
}

void AsciiParams::SetDefaults()
{
    TcpParams::SetDefaults();
    decimals.Set(DEFAULT_DECIMALS);
}

} // namespace AsciiTcp
