#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace ZuCtl
{

/// Reads a text as a value of the type of `present`: a text is taken as it is, everything else is JSON.
/// Throws `Failure` with `ExitStatus::USAGE` that names `key`.
nlohmann::json TypedValue(std::string const& key, std::string const& text, nlohmann::json const& present);

} // namespace ZuCtl
