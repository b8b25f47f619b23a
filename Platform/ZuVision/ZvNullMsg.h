#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// Takes the place of a missing result.
struct ZvNullMsg;

extern ZUPLATFORM_API wClass const ZvNullMsg_Class;

/// Makes a message with one reference. The allocator is ignored. Returns `Zu::Status::BAD_ARGUMENT` if `msg` is null.
ZUPLATFORM_API wStatus ZvNullMsg_Construct(ZvNullMsg** msg, void* allocator);

} // namespace ZuVision
