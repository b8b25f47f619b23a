#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

namespace Zu
{

/// A counted object that holds a pointer, so that a plain record can be stored where counted objects are required. It
/// does not own the record.
struct PointerWrapper;

extern ZUAPI_API wClass const PointerWrapper_Class;

/// Makes a wrapper with one reference. The allocator is ignored. Returns `Zu::Status::BAD_ARGUMENT` if `wrapper` is
/// null.
ZUAPI_API wStatus PointerWrapper_Construct(PointerWrapper** wrapper, void* pointer, void* allocator);

/// Returns the wrapped pointer; null if `wrapper` is null.
ZUAPI_API void* PointerWrapper_Pointer(PointerWrapper const* wrapper);

} // namespace Zu
