#include "ZuControl/ControlProtocol/RemoveBlockParams.h"

namespace ZuControl::ControlProtocol
{

RemoveBlockParams::RemoveBlockParams() : Group("")
{
    Register("outputIdList", "Output Id List", outputIdList);
}

RemoveBlockParams::~RemoveBlockParams()
{
    Deregister("outputIdList");
}

} // namespace ZuControl::ControlProtocol
