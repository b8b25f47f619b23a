#include "ZuCommon/IMetricsReporter.h"

namespace ZuCommon
{

template class IMetricsReporter<>;
template class IMetricsReporter<std::string const&>;

} // namespace ZuCommon
