#pragma once

#include <string>

namespace ZuCtl
{

/// Asks on the terminal for a secret, which the terminal does not show.
/// Throws `Failure` with `ExitStatus::USAGE` if nothing is typed, and if the program has no terminal; the text then names
/// `option` as the other way.
std::string AskForSecret(std::string const& question, std::string const& option);

/// As `AskForSecret`, twice. Throws also if the two differ.
std::string AskForNewSecret(std::string const& question, std::string const& option);

} // namespace ZuCtl
