#pragma once

#include "ZuControl/ControlProtocol/Layout.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>
#include <string_view>
#include <vector>

/// A number for the layout that a PLC depends on: the same for the same layout on every machine.
///
/// It covers the types, ids, sizes, byte orders and sources of all entries of a service, and no display names. Clients
/// and PLC programs compute it too: docs/registers.md has the recipe. A change of the recipe needs a new version.
namespace ZuControl::ControlProtocol::Fingerprint
{

inline constexpr uint8 VERSION = 1;

/// The entries in the order of their ids, in which the recipe takes them. They stay the layout's.
ZUCONTROL_API std::vector<LayoutEntry const*> InOrder(Layout const& layout);

/// The bytes of a list of layouts: the same layouts give the same bytes.
ZUCONTROL_API std::string CanonicalBytes(std::vector<Layout> const& layouts);

/// The CRC-32 of the canonical bytes.
ZUCONTROL_API uint32 Of(std::vector<Layout> const& layouts);

/// CRC-32 as zip and Ethernet use it: the CRC-32 of "123456789" is 0xCBF43926.
ZUCONTROL_API uint32 Crc32(std::string_view bytes);

} // namespace ZuControl::ControlProtocol::Fingerprint
