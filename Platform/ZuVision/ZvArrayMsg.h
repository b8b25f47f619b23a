#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// A message that contains several messages, in order.
struct ZvArrayMsg;

extern ZUPLATFORM_API wClass const ZvArrayMsg_Class;

/// Makes a message with one reference. It adds a reference to each of the `count` elements, which may be null. The
/// allocator is ignored. Returns `Zu::Status::BAD_ARGUMENT` if `msg` is null, or if `elements` is null and `count` is
/// not 0.
ZUPLATFORM_API wStatus ZvArrayMsg_Construct(ZvArrayMsg** msg, void* const* elements, uint64 count, void* allocator);

/// Returns the number of elements; 0 if `msg` is no array message.
ZUPLATFORM_API uint64 ZvArrayMsg_Count(void const* msg) noexcept;

/// Returns the element, borrowed from the message; null for an index out of range.
ZUPLATFORM_API void* ZvArrayMsg_At(void const* msg, uint64 index) noexcept;

} // namespace ZuVision
