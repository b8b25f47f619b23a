#pragma once

#include "Host/Store/ArchiveContents.h"

#include <nlohmann/json_fwd.hpp>

#include <map>
#include <set>
#include <string>
#include <vector>

/// The document of a service in a job, as far as the host knows it.
namespace ZuHost::JobDocument
{

/// The name in the file: "controls/ModbusTcp/config.json".
std::string NameOf(std::string const& typeName);

/// "ModbusTcp" of "controls/ModbusTcp/config.json"; the name itself where it is built differently.
std::string TypeNameOf(std::string const& name);

/// Whether a load applies `document`. A document without settings or of another version is refused whole: the service then
/// stays as it is.
bool IsAccepted(nlohmann::json const& document);

/// As above, for the text of a document.
bool IsAccepted(std::string const& text);

/// Whether there is a document for this service that a load applies.
bool HasAccepted(ArchiveContents::Files const& files, std::string const& typeName);

/// Disables these services in their documents, and gives those that were enabled there. A document that a load refuses is
/// left alone.
std::vector<std::string> HoldBack(ArchiveContents::Files& files, std::set<std::string> const& typeNames);

/// Writes into the documents of the services that are the keys of `wanted` that they are enabled. A service without a document
/// is passed over.
void Enable(ArchiveContents::Files& files, std::map<std::string, std::string> const& wanted);

} // namespace ZuHost::JobDocument
