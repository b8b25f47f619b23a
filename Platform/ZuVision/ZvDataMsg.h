#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// A message with a time and an encoder position of its own, which are finer than those of its stamp.
struct ZvDataMsg;

extern ZUPLATFORM_API wClass const ZvDataMsg_Class;

/// Makes a message with one reference. It copies the stamp; null for no stamp. The allocator is ignored. Returns
/// `Zu::Status::BAD_ARGUMENT` if `msg` is null.
ZUPLATFORM_API wStatus ZvDataMsg_Construct(ZvDataMsg** msg, wStamp const* stamp, uint64 time, int64 encoder,
                                           void* allocator);

/// Returns the time; all ones, for no reading, if `msg` is no data message.
ZUPLATFORM_API uint64 ZvDataMsg_Time(void const* msg) noexcept;

/// Returns the encoder position; the lowest value, for no reading, if `msg` is no data message.
ZUPLATFORM_API int64 ZvDataMsg_Encoder(void const* msg) noexcept;

} // namespace ZuVision
