#pragma once

#include "wApi/wTypes.h"

#include <cstddef>
#include <string>
#include <string_view>

/// Checks the text of a document before other code parses or stores it.
namespace ZuHost::DocumentCheck
{

inline constexpr std::size_t MAX_BYTES = 16 * 1024 * 1024;
inline constexpr uint32 MAX_VALUES =
    250'000;                            ///< arrays, objects, texts, numbers: bounds the memory of a parsed document
inline constexpr uint32 MAX_DEPTH = 64; ///< of arrays and objects: bounds the recursion of code that walks a document

/// Says for a person why `text` is no valid document; empty for JSON within the bounds.
std::string FaultOf(std::string_view text);

} // namespace ZuHost::DocumentCheck
