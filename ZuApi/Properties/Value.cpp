#include "ZuApi/Properties/Value.h"

namespace Zu::Properties
{

template class Value<bool>;
template class Value<std::string>;
template class Value<double>;
template class Value<uint16>;
template class Value<uint32>;
template class Value<uint64>;
template class Value<int32>;
template class Value<std::vector<std::string>>;

} // namespace Zu::Properties
