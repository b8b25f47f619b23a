#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// A message with a time and an encoder of its own beside those of its stamp, and finer than these.
struct ZvDataMsg;

extern ZUPLATFORM_API wClass const ZvDataMsg_Class;

/// A new message with one reference; it copies the stamp, null for none. 1 on success; the allocator is passed through, null
/// is the default one.
ZUPLATFORM_API wStatus ZvDataMsg_Construct(ZvDataMsg** msg, wStamp const* stamp, uint64 time, int64 encoder,
                                           void* allocator);

/// All ones, no reading, for what is no data message.
ZUPLATFORM_API uint64 ZvDataMsg_Time(void const* msg) noexcept;

/// The lowest value, no reading, for what is no data message.
ZUPLATFORM_API int64 ZvDataMsg_Encoder(void const* msg) noexcept;

} // namespace ZuVision
