#pragma once

#include "wApi/wExport.h"

#include <compare>
#include <string>

namespace ZuRest
{

/// The part of the resource tree that a path lies in: its first two segments. Requests of different parts may run side by
/// side.
struct ZUPLATFORM_API Place
{
    std::string tree;    ///< "controls" of "/controls/ModbusTcp/outputs", decoded
    std::string subtree; ///< "ModbusTcp"; empty for the path of the tree itself

    static Place Of(std::string const& path);

    /// The path of the resource at the head of this part.
    std::string HeadPath() const;

    /// Whether `path` leads to the head of its part.
    static bool IsHead(std::string const& path);

    auto operator<=>(Place const&) const = default;
};

} // namespace ZuRest
