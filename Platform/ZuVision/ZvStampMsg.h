#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// The stamp of a frame. Time and encoder position of the message are those of the stamp.
struct ZvStampMsg;

extern ZUPLATFORM_API wClass const ZvStampMsg_Class;

/// Makes a message with one reference and a copy of the stamp. The allocator is ignored. Returns
/// `Zu::Status::BAD_ARGUMENT` if `msg` is null.
ZUPLATFORM_API wStatus ZvStampMsg_Construct(ZvStampMsg** msg, wStamp const& stamp, void* allocator);

} // namespace ZuVision
