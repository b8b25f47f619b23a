#include "Plugins/AsciiTcp/AsciiCommands.h"

#include "Plugins/AsciiTcp/AsciiText.h"
#include "ZuApi/Exception.h"

namespace AsciiTcp
{

SendTextParams::SendTextParams() : Group("")
{
    Register("text", "Text", text);
}

SendTextParams::~SendTextParams()
{
    Deregister("text"); // before the member, to which the base class refers, is destroyed
}

bool SendTextParams::IsValid(std::string_view text)
{
    return !text.empty() && text.size() <= MOST_BYTES && IsPrintable(text);
}

ReachedClients::ReachedClients(uint64 count) : Group("")
{
    Register("clients", "Clients", clients);
    clients.Set(count);
}

ReachedClients::~ReachedClients()
{
    Deregister("clients"); // before the member, to which the base class refers, is destroyed
}

AsciiCommands::AsciiCommands(Handlers newHandlers) : handlers(std::move(newHandlers))
{
}

AsciiCommands::~AsciiCommands() = default;

std::vector<ZuControl::ControlActionInfo> AsciiCommands::ListActions() const
{
    return {{DISCONNECT_ALL, "Disconnect All"}, {SEND_TEXT, "Send Text"}};
}

std::shared_ptr<Zu::Params::Group> AsciiCommands::GetActionParams(std::string const& id) const
{
    if (id == DISCONNECT_ALL)
    {
        return std::make_shared<Zu::Params::Group>("");
    }
    if (id == SEND_TEXT)
    {
        return std::make_shared<SendTextParams>();
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "The action '%s' does not exist. No parameters available", id.c_str());
}

std::shared_ptr<Zu::Params::Group> AsciiCommands::InvokeAction(std::string const& id, Zu::Params::Group const& args)
{
    if (id == DISCONNECT_ALL)
    {
        return std::make_shared<ReachedClients>(handlers.disconnectAll());
    }
    if (id != SEND_TEXT)
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "The action '%s' does not exist. Action ignored.", id.c_str());
    }
    std::string const& text = dynamic_cast<SendTextParams const&>(args).text.Get();
    if (!SendTextParams::IsValid(text))
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A text has 1 to %u bytes and no control character",
                 SendTextParams::MOST_BYTES);
    }
    return std::make_shared<ReachedClients>(handlers.sendText(text));
}

} // namespace AsciiTcp
