#include "ZuControl/Control/IControlDataCache.h"

namespace ZuControl
{

IControlDataCache::~IControlDataCache() = default;

} // namespace ZuControl
