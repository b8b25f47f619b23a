#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

struct wStamp;

namespace ZuVision
{

/// Base of all messages that results carry: counted objects that never change once they are made. Handles are passed as
/// `void*`; `wObject_Is(msg, ZvMsg_Class)` and its like tell what a message is, derived classes included.
struct ZUPLATFORM_API ZvMsg : wObject
{
    /// The stamp is part of the derived message, null for none.
    wStamp const* const stamp;

protected:
    ZvMsg(wClass const& msgClass, wStamp const* ownStamp) noexcept;
    ~ZvMsg() = default;
};

/// The base alone: no message is of this class only.
extern ZUPLATFORM_API wClass const ZvMsg_Class;

/// The message's stamp, borrowed; null when the message has none at this index, or is no message.
inline wStamp const* ZvMsg_StampAt(void const* msg, uint64 index) noexcept
{
    return index == 0 && wObject_Is(msg, ZvMsg_Class) ? static_cast<ZvMsg const*>(msg)->stamp : nullptr;
}

} // namespace ZuVision
