#pragma once

#include "Ctl/CommandLine/Command.h"

namespace ZuCtl
{

/// All commands, in the order of the help. A group stands before its commands.
Commands CommandTable();

} // namespace ZuCtl
