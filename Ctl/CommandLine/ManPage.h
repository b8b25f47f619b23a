#pragma once

#include "Ctl/CommandLine/Command.h"

#include <string>

namespace ZuCtl
{

/// The man page of the program, in roff, made of the texts of its help.
std::string ManPage(Commands commands);

} // namespace ZuCtl
