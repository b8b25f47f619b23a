#pragma once

namespace ZuHost
{

class CommandTable;
class DeskIo;

/// Offers the commands that drive the inputs and outputs. `io` outlives the table. A command refuses with what `DeskIo` and its
/// inputs and outputs say: -999 for one that there is not, -997 for an argument, -1000 for a state, -977 for want of room.
void OfferIoCommands(CommandTable& table, DeskIo& io);

} // namespace ZuHost
