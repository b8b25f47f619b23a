#include "Ctl/Commands/CommandTable.h"

#include "Ctl/Commands/Commands.h"

#include <iterator>
#include <utility>

namespace ZuCtl
{

namespace
{

void Append(std::vector<Command>& table, std::vector<Command> commands)
{
    table.insert(table.end(), std::make_move_iterator(commands.begin()), std::make_move_iterator(commands.end()));
}

std::vector<Command> MakeTable()
{
    std::vector<Command> table{StatusCommand(), ServicesCommand(), EnableCommand(), DisableCommand(),
                               GetCommand(),    SetCommand(),      CallCommand()};
    Append(table, WatchCommands());
    Append(table, {SourcesCommand(), MapCommand()});
    Append(table, JobsCommands());
    Append(table, {ProblemsCommand(), MetricsCommand()});
    Append(table, UsersCommands());
    Append(table, TokensCommands());
    Append(table, {DoctorCommand(), BackupCommand(), RestoreCommand(), SupportCommand(), CompletionCommand()});
    return table;
}

} // namespace

Commands CommandTable()
{
    static std::vector<Command> const TABLE = MakeTable();
    return TABLE;
}

} // namespace ZuCtl
