#include "ZuApi/Params/Group.h"

namespace Zu::Params
{

Group::Group(std::string const& newExtendedType) : StructBase(newExtendedType)
{
}

Group::~Group() = default;

} // namespace Zu::Params
