#include "ZuApi/Params/Value.h"

namespace Zu::Params
{

template class Value<bool>;
template class Value<std::string>;
template class Value<double>;
template class Value<uint16>;
template class Value<uint32>;
template class Value<uint64>;
template class Value<int32>;

} // namespace Zu::Params
