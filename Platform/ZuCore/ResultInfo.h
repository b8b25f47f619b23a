#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <string>

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

} // namespace ZuCore
