#pragma once

#include "wApi/wExport.h"
#include "wApi/wObject.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuCore
{

/// What a handle refers to. It is known here so that a question costs no call; `ResultInfo_Construct` alone makes it.
struct ResultInfoObject final : wObject
{
    ResultInfoObject(std::string const& sourceId, uint16 resultType);
    ~ResultInfoObject() = default;

    ResultInfoObject(ResultInfoObject const&) = delete;
    ResultInfoObject& operator=(ResultInfoObject const&) = delete;

    uint64 const numericId; // beside the count of references: whoever asks for it is about to share the info
    uint16 const type;
    std::string const dataSourceId;
};

/// Says what a result is: its data source and its type. A counted object (see wApi/wObject.h) that never changes; a
/// publisher makes one for each data source and shares it among all results.
using ResultInfo = ResultInfoObject*;

extern ZUPLATFORM_API wClass const ResultInfo_Class;

inline constexpr uint16 RESULT_TYPE_STAMP = 11;
inline constexpr uint16 RESULT_TYPE_MEASUREMENT = 19;

/// Makes a new one with one reference. The allocator is passed through; null is the default one. 1 on success.
ZUPLATFORM_API wStatus ResultInfo_Construct(ResultInfo* info, std::string const& dataSourceId, uint16 type,
                                            void* allocator);

/// The 64-bit FNV-1a hash of the data source's id; 0 for null.
inline uint64 ResultInfo_NumericId(ResultInfoObject const* info) noexcept
{
    return info != nullptr ? info->numericId : 0;
}

/// Number of the result's type; 0 for null.
inline uint16 ResultInfo_Type(ResultInfoObject const* info) noexcept
{
    return info != nullptr ? info->type : uint16{0};
}

/// Lives as long as the info; empty for null.
ZUPLATFORM_API std::string const& ResultInfo_DataSourceId(ResultInfoObject const* info) noexcept;

} // namespace ZuCore
