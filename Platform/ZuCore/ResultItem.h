#pragma once

#include "ZuCore/ResultInfo.h"
#include "wApi/wExport.h"
#include "wApi/wObject.h"

struct wMsgInfo;

namespace ZuCore
{

struct ResultItemObject;

/// One result: what it says and what it is. A counted object (see wApi/wObject.h) that never changes.
///
/// An item of a set lies inside the set: a reference to the item is one to the set.
using ResultItem = ResultItemObject*;

extern ZUPLATFORM_API wClass const ResultItem_Class;

/// What an item is made of. Whoever owns it owns a reference to each.
struct ResultItemParts
{
    wMsgInfo* msgInfo;
    ResultInfo info;
};

/// What a handle refers to. It is known here so that a question costs no call; `ResultItem_Construct` and the sets make it.
struct ResultItemObject : wObject
{
    /// An item of its own, whose parts lie with it.
    explicit ResultItemObject(ResultItemParts const& ownParts) noexcept : wObject(ResultItem_Class), parts(&ownParts)
    {
    }

    /// An item inside `set`. The parts may be filled in later, before anybody sees the item.
    ResultItemObject(wObject& set, ResultItemParts const& partsInSet) noexcept
        : wObject(ResultItem_Class, set), parts(&partsInSet)
    {
    }

    ResultItemParts const* const parts;
};

/// Makes an item of its own with one reference; it takes one more reference to each of its two parts. 1 on success.
ZUPLATFORM_API wStatus ResultItem_Construct(ResultItem* item, wMsgInfo* msgInfo, ResultInfo resultInfo,
                                            void* allocator);

/// Borrowed from the item; null for null.
inline wMsgInfo* ResultItem_MsgInfo(ResultItemObject const* item) noexcept
{
    return item != nullptr ? item->parts->msgInfo : nullptr;
}

/// Borrowed from the item; null for null.
inline ResultInfo ResultItem_ResultInfo(ResultItemObject const* item) noexcept
{
    return item != nullptr ? item->parts->info : nullptr;
}

} // namespace ZuCore
