// The destructors of this folder's interfaces.

#include "ZuCommon/Metrics.h"
#include "ZuCommon/Persistence.h"

namespace ZuCommon
{

IMetricsKeeper::~IMetricsKeeper() = default;

IMetricsSource::~IMetricsSource() = default;

IPersistHandler::~IPersistHandler() = default;

IPersistStore::~IPersistStore() = default;

} // namespace ZuCommon
