#include "ZuControl/ControlProtocol/AddBlockParams.h"

namespace ZuControl::ControlProtocol
{

AddBlockParams::AddBlockParams() : Group("")
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

} // namespace ZuControl::ControlProtocol
