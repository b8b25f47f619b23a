#pragma once

#include "Ctl/CommandLine/Command.h"

#include <map>
#include <string>
#include <vector>

namespace ZuCtl
{

/// A command line, parsed.
struct ParsedWords
{
    Command const* command = nullptr; ///< null: print `text` and end
    std::string text;
    std::map<std::string, std::vector<std::string>> values; ///< by the name of the argument; flags have one empty value
};

/// Parses the words behind the name of the program. `--help` and `--version` give a text.
/// Throws `Failure` with `ExitStatus::USAGE`.
ParsedWords ParseWords(std::vector<std::string> const& words, Commands commands);

/// The text of `--version`, with a final line break.
std::string VersionText();

} // namespace ZuCtl
