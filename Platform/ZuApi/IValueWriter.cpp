#include "ZuApi/IValueWriter.h"

namespace Zu::Properties
{

IValueWriter::~IValueWriter() = default;

} // namespace Zu::Properties
