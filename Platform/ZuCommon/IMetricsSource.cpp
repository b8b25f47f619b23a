#include "ZuCommon/IMetricsSource.h"

namespace ZuCommon
{

IMetricsSource::~IMetricsSource() = default;

} // namespace ZuCommon
