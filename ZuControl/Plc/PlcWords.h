#pragma once

#include "ZuControl/ControlProtocol/RegisterField.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

/// The words and numbers of tags, as all formats write them.
namespace ZuControl::Plc
{

/// "DINT" for a number, "TEXT", "BIT" or "RAW" for the rest.
ZUCONTROL_INTERNAL_API char const* NameOf(ControlProtocol::FieldType type);
ZUCONTROL_INTERNAL_API char const* NameOf(ControlProtocol::FieldRole role);
ZUCONTROL_INTERNAL_API char const* NameOf(ControlProtocol::FieldArea area);

/// The address as clients write it that count each table from its first number: 400001 for register 0, 100001 for
/// discrete input 0, 000001 for coil 0. Six digits.
ZUCONTROL_INTERNAL_API std::string TableAddress(ControlProtocol::FieldArea area, uint32 address);

/// The factor from the number in the registers to the value, such as "0.001".
ZUCONTROL_INTERNAL_API std::string ScaleText(uint32 divisor);

/// The number that marks an invalid value, in decimal digits; "NaN" for REAL and LREAL; empty without one.
ZUCONTROL_INTERNAL_API std::string InvalidText(ControlProtocol::RegisterField const& field);

/// Whether a number of this type has a sign.
ZUCONTROL_INTERNAL_API bool IsSigned(ControlProtocol::FieldType type);

} // namespace ZuControl::Plc
