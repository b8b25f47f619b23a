// The destructors of this folder's interfaces.

#include "ZuCommon/IMetricsKeeper.h"
#include "ZuCommon/IMetricsSource.h"
#include "ZuCommon/IPersistHandler.h"
#include "ZuCommon/IPersistStore.h"

namespace ZuCommon
{

IMetricsKeeper::~IMetricsKeeper() = default;

IMetricsSource::~IMetricsSource() = default;

IPersistHandler::~IPersistHandler() = default;

IPersistStore::~IPersistStore() = default;

} // namespace ZuCommon
