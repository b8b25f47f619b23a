#include "ZuControl/Control/IPersistRegistry.h"

namespace ZuControl
{

IPersistRegistry::~IPersistRegistry() = default;

} // namespace ZuControl
