#pragma once

#include "ZuCore/ResultInfo.h"

struct wMsgInfo;

namespace ZuCore
{

struct ResultItemObject;

/// One result: what it says and what it is. A counted object (see wApi/wObject.h) that never changes.
///
/// An item of a set lies inside the set: a reference to the item is one to the set.
using ResultItem = ResultItemObject*;

extern ZUPLATFORM_API wClass const ResultItem_Class;

/// Makes an item of its own with one reference; it takes one more reference to each of its two parts. 1 on success.
ZUPLATFORM_API wStatus ResultItem_Construct(ResultItem* item, wMsgInfo* msgInfo, ResultInfo resultInfo,
                                            void* allocator);

/// Borrowed from the item; null for null.
ZUPLATFORM_API wMsgInfo* ResultItem_MsgInfo(ResultItemObject const* item) noexcept;

/// Borrowed from the item; null for null.
ZUPLATFORM_API ResultInfo ResultItem_ResultInfo(ResultItemObject const* item) noexcept;

} // namespace ZuCore
