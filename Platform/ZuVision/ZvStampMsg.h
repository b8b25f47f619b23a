#pragma once

#include "ZuVision/ZvMsg.h"

namespace ZuVision
{

/// The stamp of a frame, and nothing else: time and encoder are those of the stamp.
struct ZvStampMsg;

extern ZUPLATFORM_API wClass const ZvStampMsg_Class;

/// A new message with one reference and a copy of the stamp. 1 on success; the allocator is passed through, null is the
/// default one.
ZUPLATFORM_API wStatus ZvStampMsg_Construct(ZvStampMsg** msg, wStamp const& stamp, void* allocator);

} // namespace ZuVision
