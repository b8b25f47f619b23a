#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"

namespace Zu::Properties::Internal
{

/// Held while a node that is only read makes what it put off: its schema, the node of an attribute. Readers of one node may
/// run side by side, so the first of them makes it and the rest find it. Recursive, since schemas contain schemas; no
/// handler, no observer and no log line runs under it, and only the pool of texts is locked inside it.
ZUAPI_API Zu::RecursiveMutex& LazyBuildLock();

} // namespace Zu::Properties::Internal
