#pragma once

#include "wApi/wTypes.h"

#include <string_view>

namespace ZuCore
{

/// The numeric id of a data source: the 64-bit FNV-1a hash of its id.
constexpr uint64 DataSourceHash(std::string_view dataSourceId) noexcept
{
    uint64 hash = 0xcbf29ce484222325;
    for (char const character : dataSourceId)
    {
        hash ^= static_cast<uint8>(character);
        hash *= 0x100000001b3;
    }
    return hash;
}

} // namespace ZuCore
