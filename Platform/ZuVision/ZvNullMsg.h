#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// Stands where a result should be and is not.
struct ZvNullMsg;

extern ZUPLATFORM_API wClass const ZvNullMsg_Class;

/// A new message with one reference. 1 on success; the allocator is passed through, null is the default one.
ZUPLATFORM_API wStatus ZvNullMsg_Construct(ZvNullMsg** msg, void* allocator);

} // namespace ZuVision
