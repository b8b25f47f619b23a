#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <string>

struct wMsgInfo;

namespace ZuCore
{

/// The object behind a `ResultInfo`. It is defined here so that the accessors are inline; only `ResultInfo_Construct`
/// makes one.
struct ResultInfoObject final : wObject
{
    ResultInfoObject(std::string const& sourceId, uint16 resultType);
    ~ResultInfoObject() = default;

    ResultInfoObject(ResultInfoObject const&) = delete;
    ResultInfoObject& operator=(ResultInfoObject const&) = delete;

    // ^ Beside the reference count, in the same cache line: code that reads the id usually shares the info next.
    uint64 const numericId;
    uint16 const type;
    std::string const dataSourceId;
};

/// Describes a result: its data source and its type. An immutable counted object (see wApi/wObject.h). A publisher
/// makes one for each data source and shares it among all results.
using ResultInfo = ResultInfoObject*;

extern ZUPLATFORM_API wClass const ResultInfo_Class;

inline constexpr uint16 RESULT_TYPE_STAMP = 11;
inline constexpr uint16 RESULT_TYPE_MEASUREMENT = 19;

/// Makes a result info with one reference. The allocator is ignored. Returns `Zu::Status::BAD_ARGUMENT` if `info` is
/// null and `Zu::Status::FAILURE` if memory runs out.
ZUPLATFORM_API wStatus ResultInfo_Construct(ResultInfo* info, std::string const& dataSourceId, uint16 type,
                                            void* allocator);

/// Returns the 64-bit FNV-1a hash of the data source's id; 0 for null.
inline uint64 ResultInfo_NumericId(ResultInfoObject const* info) noexcept
{
    return info != nullptr ? info->numericId : 0;
}

/// Returns the number of the result's type; 0 for null.
inline uint16 ResultInfo_Type(ResultInfoObject const* info) noexcept
{
    return info != nullptr ? info->type : uint16{0};
}

/// Returns the data source's id, which lives as long as the info; empty for null.
ZUPLATFORM_API std::string const& ResultInfo_DataSourceId(ResultInfoObject const* info) noexcept;

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
