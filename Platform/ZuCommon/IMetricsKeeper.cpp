#include "ZuCommon/IMetricsKeeper.h"

namespace ZuCommon
{

IMetricsKeeper::~IMetricsKeeper() = default;

} // namespace ZuCommon
