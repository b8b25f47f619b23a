#pragma once

#include "Ctl/CommandLine/Command.h"

#include <string>

namespace ZuCtl
{

/// A script with which bash completes the commands and options of the program.
std::string BashCompletion(Commands commands);

/// The same for zsh.
std::string ZshCompletion(Commands commands);

} // namespace ZuCtl
