#pragma once

#include "Ctl/CommandLine/Command.h"

namespace ZuCtl
{

// Each command has a file of its own, and this function in it.

Command StatusCommand();
Command ServicesCommand();
Command EnableCommand();
Command DisableCommand();
Command GetCommand();
Command SetCommand();
Command CallCommand();
Command SourcesCommand();
Command MapCommand();
Command ProblemsCommand();
Command MetricsCommand();
Command DoctorCommand();
Command BackupCommand();
Command RestoreCommand();
Command SupportCommand();
Command CompletionCommand();

// A group: the first entry names it, the others are its commands.
std::vector<Command> WatchCommands();
std::vector<Command> JobsCommands();
std::vector<Command> UsersCommands();
std::vector<Command> TokensCommands();

} // namespace ZuCtl
