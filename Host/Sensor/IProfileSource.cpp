#include "Host/Sensor/IProfileSource.h"

namespace ZuHost
{

IProfileSource::~IProfileSource() = default;

} // namespace ZuHost
