#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// Several messages in one, in order.
struct ZvArrayMsg;

extern ZUPLATFORM_API wClass const ZvArrayMsg_Class;

/// A new message with one reference; it takes one more reference to each of the `count` elements, which may be null. 1 on
/// success; the allocator is passed through, null is the default one.
ZUPLATFORM_API wStatus ZvArrayMsg_Construct(ZvArrayMsg** msg, void* const* elements, uint64 count, void* allocator);

/// Number of elements; 0 for what is no array message.
ZUPLATFORM_API uint64 ZvArrayMsg_Count(void const* msg) noexcept;

/// The element, borrowed from the message; null for an index that is out of range.
ZUPLATFORM_API void* ZvArrayMsg_At(void const* msg, uint64 index) noexcept;

} // namespace ZuVision
