#pragma once

#include "ZuControl/Export.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace ZuControl
{

/// Parses configuration documents: what `nlohmann::json::parse` gives, its exceptions included, in about half the time.
///
/// It reads the frame of a document and the tokens that are common in one. A token that takes more thought, an escaped text
/// or a fraction, is given to the library, and so is the whole text when it is not JSON: the library then says why.
class ZUCONTROL_INTERNAL_API DocumentParser
{
public:
    /// Throws the library's parse error, and its out-of-range error for a number beyond all floating point numbers.
    static nlohmann::json Parse(std::string const& text);
};

} // namespace ZuControl
