#pragma once

#include "ZuControl/Plc/PlcTag.h"

#include <string>

// The writers of the formats, each in a file of its own.
namespace ZuControl::Plc
{

std::string WriteCsv(PlcTagList const& list);

} // namespace ZuControl::Plc
