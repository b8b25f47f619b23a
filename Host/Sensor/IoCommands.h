#pragma once

namespace ZuHost
{

class CommandTable;
class DeskIo;

/// Adds the commands that drive the inputs and outputs. `io` outlives the table. Each command throws as the called
/// operation of `DeskIo` or of its channel does: `Zu::Status::NOT_FOUND` for a channel, `Zu::Status::BAD_ARGUMENT` for
/// an argument, `Zu::Status::WRONG_STATE` for a state, `Zu::Status::FULL` for a full queue.
void OfferIoCommands(CommandTable& table, DeskIo& io);

} // namespace ZuHost
