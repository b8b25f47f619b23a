#include "ZuApi/IValueReader.h"

namespace Zu::Properties
{

IValueReader::~IValueReader() = default;

} // namespace Zu::Properties
