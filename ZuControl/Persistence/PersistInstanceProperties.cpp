#include "ZuControl/Persistence/PersistInstanceProperties.h"

namespace ZuControl
{

PersistInstanceProperties::PersistInstanceProperties() : Structure(true)
{
    Register("enabled", enabled);
}

PersistInstanceProperties::~PersistInstanceProperties() = default;

} // namespace ZuControl
