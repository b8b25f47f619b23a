#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"

namespace Zu::Properties::Internal
{

/// The lock that is held while reading a node creates a part of it on demand: its schema, or the node of an attribute.
/// Threads that read one node concurrently then find what the first of them created. It is recursive because schemas
/// contain schemas. No handler, observer or log line runs under it. The only lock taken under it is that of the pool of
/// texts.
ZUAPI_API Zu::RecursiveMutex& LazyBuildLock();

} // namespace Zu::Properties::Internal
