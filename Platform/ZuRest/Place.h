#pragma once

#include "wApi/wExport.h"

#include <compare>
#include <string>

namespace ZuRest
{

/// The part of the resource tree to which a path belongs: its first two segments. Requests of different places may run
/// concurrently.
struct ZUPLATFORM_API Place
{
    std::string tree;    ///< "controls" of "/controls/ModbusTcp/outputs", decoded
    std::string subtree; ///< "ModbusTcp", decoded; empty for the path of the tree itself

    static Place Of(std::string const& path);

    /// Returns the path of the resource at the head of this place.
    std::string HeadPath() const;

    /// Whether `path` is the head of its place: it has at most two segments.
    static bool IsHead(std::string const& path);

    auto operator<=>(Place const&) const = default;
};

} // namespace ZuRest
