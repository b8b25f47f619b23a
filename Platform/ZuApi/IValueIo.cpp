#include "ZuApi/IValueIo.h"

namespace Zu::Properties
{

IValueIo::~IValueIo() = default;

} // namespace Zu::Properties
