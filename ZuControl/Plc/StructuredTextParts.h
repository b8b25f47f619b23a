#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ZuControl::Plc
{
struct PlcTag;
}

/// The parts of a Structured Text file that are the same for every map.
///
/// They keep to what all tools for PLCs do alike: no implicit conversion, no conversion of bits to REAL, no order of bit
/// strings, both operands of AND and OR safe to evaluate, no loop variable used after its loop, named arguments for the
/// functions of the file and arguments by position for those of the standard.
namespace ZuControl::Plc::StructuredText
{

/// Replaces each "{name}" in `text` by the value with this name, which must exist.
std::string Filled(std::string_view text, std::map<std::string_view, std::string> const& values);

// Functions, with `prefix` in front of their names.

std::string DwordFunction(std::string const& prefix);
std::string LwordFunction(std::string const& prefix);
std::string RealFunction(std::string const& prefix);
std::string LrealFunction(std::string const& prefix);
std::string TextFunction(std::string const& prefix);
std::string CodeFunction(std::string const& prefix);

/// The function block of commands. The values: prefix; commandComment, textComment, textLength; first and last register;
/// requestRegister, commandRegister, textRegister; requestWord, commandWord, textWord, the expressions for these
/// registers; answerId, answerStatus, the members of the map.
extern std::string_view const COMMAND_BLOCK;

/// The function block that takes results from a queue, with an example for each queue in the tags of one assembly. Empty
/// if there is none.
std::string QueueBlock(std::string const& prefix, std::vector<PlcTag const*> const& tags);

} // namespace ZuControl::Plc::StructuredText
