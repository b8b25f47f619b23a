#pragma once

#include <functional>
#include <string>

namespace ZuRest
{

/// A request as it came over the wire, already cut into its parts.
struct Request
{
    std::string method = "GET";
    std::string path;   ///< percent-encoded
    std::string query;  ///< what stands behind the question mark
    std::string body;   ///< JSON, or empty
    std::string accept; ///< these three as the header of the name says; empty for none
    std::string ifMatch;
    std::string ifNoneMatch;

    /// Asked when the request's turn has come, on the thread that carries it out: false drops it. Empty counts as true.
    std::function<bool()> isWanted;
};

} // namespace ZuRest
