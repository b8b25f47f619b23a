#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

struct wStamp;

namespace ZuVision
{

/// Base of all messages in results. Messages are immutable counted objects. Handles are passed as `void*`;
/// `wObject_Is(msg, ZvMsg_Class)` and the like test for a class, derived classes included.
struct ZUPLATFORM_API ZvMsg : wObject
{
    /// The stamp, a member of the derived message; null for no stamp.
    wStamp const* const stamp;

protected:
    ZvMsg(wClass const& msgClass, wStamp const* ownStamp) noexcept;
    ~ZvMsg() = default;
};

/// The class of the base; every message has a class derived from it.
extern ZUPLATFORM_API wClass const ZvMsg_Class;

/// Returns the message's stamp, borrowed; null if the message has none at this index or `msg` is no message.
inline wStamp const* ZvMsg_StampAt(void const* msg, uint64 index) noexcept
{
    return index == 0 && wObject_Is(msg, ZvMsg_Class) ? static_cast<ZvMsg const*>(msg)->stamp : nullptr;
}

} // namespace ZuVision
