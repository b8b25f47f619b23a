#pragma once

#include "Ctl/Output/Printer.h"

#include <nlohmann/json.hpp>

#include <vector>

namespace ZuCtl
{

/// The cells SOURCE, VALUE, UNIT and DECISION for a document of /datasources.
std::vector<Cell> SourceRow(nlohmann::json const& source);

/// Its newest value; of a stamp the number of its profile.
std::string SourceValue(nlohmann::json const& source);

/// "good", "bad" or "-".
Cell DecisionCell(nlohmann::json const& source);

} // namespace ZuCtl
