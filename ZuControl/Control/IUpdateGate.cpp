#include "ZuControl/Control/IUpdateGate.h"

namespace ZuControl
{

IUpdateGate::~IUpdateGate() = default;

} // namespace ZuControl
