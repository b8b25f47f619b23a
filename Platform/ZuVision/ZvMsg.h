#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

struct wStamp;

namespace ZuVision
{

/// Base of all messages that results carry: counted objects that never change once they are made. Handles are passed as
/// `void*`; `wObject_Is(msg, ZvMsg_Class)` and its like tell what a message is, derived classes included.
struct ZvMsg;

ZUPLATFORM_API extern wClass const ZvMsg_Class;

/// The message's stamp, borrowed; null when the message has none at this index, or is no message.
ZUPLATFORM_API wStamp const* ZvMsg_StampAt(void const* msg, uint64 index) noexcept;

} // namespace ZuVision
