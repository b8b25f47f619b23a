#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

namespace Zu
{

/// A counted object around a pointer, so that a plain record can go where counted objects go. It does not own what the
/// pointer names.
struct PointerWrapper;

extern ZUAPI_API wClass const PointerWrapper_Class;

/// Makes a wrapper with one reference. The allocator is passed through. -997 when `wrapper` is null.
ZUAPI_API wStatus PointerWrapper_Construct(PointerWrapper** wrapper, void* pointer, void* allocator);

/// The pointer that was wrapped; null for null.
ZUAPI_API void* PointerWrapper_Pointer(PointerWrapper const* wrapper);

} // namespace Zu
