#pragma once

#include "ZuControl/Control/IControlActionTarget.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace AsciiTcp
{

/// The commands of the service itself.
class AsciiCommands final : public ZuControl::IControlActionTarget
{
public:
    static constexpr char const* DISCONNECT_ALL = "disconnectAll";
    static constexpr char const* SEND_TEXT = "sendText";

    /// Each carries out its command and gives the number of clients that it reaches; any thread may come.
    struct Handlers
    {
        std::function<uint64()> disconnectAll;
        std::function<uint64(std::string const& text)> sendText; ///< the text is valid
    };

    explicit AsciiCommands(Handlers newHandlers);
    ~AsciiCommands() override;
    AsciiCommands(AsciiCommands const&) = delete;
    AsciiCommands& operator=(AsciiCommands const&) = delete;

    std::vector<ZuControl::ControlActionInfo> ListActions() const override;

    /// Throws -999 for a command that does not exist.
    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const override;

    /// The result is a ReachedClients. Throws -999 for a command that does not exist, -997 for a text that cannot be sent.
    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const& args) override;

private:
    Handlers const handlers;
};

} // namespace AsciiTcp
