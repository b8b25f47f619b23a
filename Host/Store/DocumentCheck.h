#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <string>
#include <string_view>

/// What a document from a file must be before anybody works with it.
namespace ZuHost::DocumentCheck
{

inline constexpr std::size_t MAX_BYTES = 16 * 1024 * 1024;
inline constexpr uint32 MAX_DEPTH = 64; ///< of arrays and objects: what works with a document goes down with it

/// Why `text` is no document, for a person; empty for valid JSON within the bounds.
std::string FaultOf(std::string_view text);

} // namespace ZuHost::DocumentCheck
