#include "ZuControl/Protocol/CommonControlProps.h"

namespace ZuControl::Protocol
{

CommonControlProps::CommonControlProps() : Group("")
{
}

CommonControlProps::~CommonControlProps() = default;

} // namespace ZuControl::Protocol
