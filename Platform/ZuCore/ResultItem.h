#pragma once

#include "ZuCore/ResultInfo.h"
#include "wApi/wExport.h"
#include "wApi/wObject.h"

struct wMsgInfo;

namespace ZuCore
{

struct ResultItemObject;

/// One result: its message and its description. An immutable counted object (see wApi/wObject.h).
///
/// An item of a set lies inside the set: a reference to the item is a reference to the set.
using ResultItem = ResultItemObject*;

extern ZUPLATFORM_API wClass const ResultItem_Class;

/// The parts of an item. Their owner, an item or a set, owns one reference to each.
struct ResultItemParts
{
    wMsgInfo* msgInfo;
    ResultInfo info;
};

/// The object behind a `ResultItem`. It is defined here so that the accessors are inline; only `ResultItem_Construct`
/// and the sets make items.
struct ResultItemObject : wObject
{
    /// An item outside of any set. The derived class contains the parts.
    explicit ResultItemObject(ResultItemParts const& ownParts) noexcept : wObject(ResultItem_Class), parts(&ownParts)
    {
    }

    /// An item inside `set`. Its parts may be filled in later, before the set returns the item to a caller.
    ResultItemObject(wObject& set, ResultItemParts const& partsInSet) noexcept
        : wObject(ResultItem_Class, set), parts(&partsInSet)
    {
    }

    ResultItemParts const* const parts;
};

/// Makes an item outside of any set with one reference. It adds a reference to each of its two parts. The allocator is
/// ignored. Returns `Zu::Status::BAD_ARGUMENT` for a null pointer and `Zu::Status::FAILURE` if memory runs out.
ZUPLATFORM_API wStatus ResultItem_Construct(ResultItem* item, wMsgInfo* msgInfo, ResultInfo resultInfo,
                                            void* allocator);

/// Returns the message info, borrowed from the item; null for null.
inline wMsgInfo* ResultItem_MsgInfo(ResultItemObject const* item) noexcept
{
    return item != nullptr ? item->parts->msgInfo : nullptr;
}

/// Returns the result info, borrowed from the item; null for null.
inline ResultInfo ResultItem_ResultInfo(ResultItemObject const* item) noexcept
{
    return item != nullptr ? item->parts->info : nullptr;
}

} // namespace ZuCore
