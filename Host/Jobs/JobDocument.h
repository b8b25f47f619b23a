#pragma once

#include "Host/Store/Archive.h"

#include <nlohmann/json_fwd.hpp>

#include <map>
#include <set>
#include <string>
#include <vector>

/// Reads and changes the parts of a service's document that the host itself uses.
namespace ZuHost::JobDocument
{

/// Stands for the sensor where a service is named. No service can have this name.
inline constexpr char const* SENSOR = "(sensor)";

/// The name of the document in the file: "controls/ModbusTcp/config.json", for `SENSOR` "sensor/config.json".
std::string NameOf(std::string const& typeName);

/// Returns "ModbusTcp" for "controls/ModbusTcp/config.json", `SENSOR` for the document of the sensor, and any name of
/// another form unchanged.
std::string TypeNameOf(std::string const& name);

/// Whether a load applies `document`. A load refuses a whole document when it has no settings or another version; the
/// service then stays as it is.
bool IsAccepted(nlohmann::json const& document);

/// As above, for the text of a document.
bool IsAccepted(std::string const& text);

/// Whether there is a document for this service that a load applies.
bool HasAccepted(ArchiveContents::Files const& files, std::string const& typeName);

/// Disables these services in their documents. Returns those services that were enabled there. Documents that a load
/// refuses are not changed.
std::vector<std::string> HoldBack(ArchiveContents::Files& files, std::set<std::string> const& typeNames);

/// Marks the services that are the keys of `wanted` as enabled in their documents. A service without a document is
/// skipped.
void Enable(ArchiveContents::Files& files, std::map<std::string, std::string> const& wanted);

} // namespace ZuHost::JobDocument
