#pragma once

#include "ZuControl/Export.h"
#include "ZuControl/Plc/PlcTag.h"
#include "wApi/wTypes.h"

#include <string>
#include <string_view>
#include <vector>

/// The names of tags.
///
/// A name is the data source, or for a block without one its type, then the name of the field: "profile_zMax_value". It
/// depends on nothing else, so that it stays when the block moves and when other blocks come and go. The exceptions:
///
/// - A text that IEC 61131-3 does not allow, or that is longer than `MOST_CHARACTERS`, is changed or cut, and a hash of
///   the original is appended.
/// - Of blocks with the same type, data source and scanner, which show the same values, the first has this name; the
///   others have the address of their block appended.
/// - If two different tags had one name, which takes sources that differ only in case or in '/' and '_', both have a hash
///   appended: no name ever changes its meaning.
namespace ZuControl::Plc
{

inline constexpr std::size_t MOST_CHARACTERS = 32;

/// Gives each tag its name. `tags` are in the order of their addresses.
ZUCONTROL_INTERNAL_API void NameTags(std::vector<PlcTag>& tags, bool hasSeveralAssemblies);

/// `text` as a name of at most `mostCharacters`, which are 10 at least. A text that is no legal name, or is too long, is
/// changed or cut, and a hash of it is appended.
ZUCONTROL_INTERNAL_API std::string LegalName(std::string_view text, std::size_t mostCharacters);

/// Whether IEC 61131-3 reserves this word: a keyword, a type, or a standard function or function block.
ZUCONTROL_INTERNAL_API bool IsReservedWord(std::string_view word);

} // namespace ZuControl::Plc
