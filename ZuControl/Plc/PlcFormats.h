#pragma once

#include "ZuControl/Export.h"
#include "ZuControl/Plc/PlcTag.h"

#include <span>
#include <string>
#include <string_view>

/// The files that PLC programmers get from a service. Each format has a writer in a file of its own; a new one is a
/// function declared in PlcWriters.h and a line in the table of PlcFormats.cpp.
namespace ZuControl::Plc
{

struct PlcFormat
{
    char const* name; ///< in the query of a request
    char const* contentType;
    char const* fileEnding;
    bool needsWords; ///< only for services with registers of two bytes
    std::string (*write)(PlcTagList const& list);
};

/// All formats in the order of their names.
ZUCONTROL_INTERNAL_API std::span<PlcFormat const> PlcFormats();

/// The format of this name; null if there is none.
ZUCONTROL_INTERNAL_API PlcFormat const* FindPlcFormat(std::string_view name);

} // namespace ZuControl::Plc
