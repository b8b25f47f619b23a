#pragma once

#include "ZuControl/Plc/PlcTag.h"

#include <string>

// The writers of the formats, each in a file of its own.
namespace ZuControl::Plc
{

std::string WriteCsv(PlcTagList const& list);
std::string WriteJson(PlcTagList const& list);
std::string WriteJsonSchema(PlcTagList const& list);
std::string WriteNodeRed(PlcTagList const& list);
std::string WritePython(PlcTagList const& list);
std::string WriteShell(PlcTagList const& list);
std::string WriteStructuredText(PlcTagList const& list);

} // namespace ZuControl::Plc
