#pragma once

#include "Plugins/Common/TextLimits.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"
#include "ZuControl/Control/IControlActionTarget.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace AsciiTcp
{

/// The argument of the command sendText.
struct SendTextParams final : public Zu::Params::Group
{
public:
    static constexpr uint32 MOST_BYTES = 256;

    SendTextParams();
    ~SendTextParams() override;

    /// Whether `text` may be sent to clients: 1 to MOST_BYTES bytes without control characters.
    static bool IsValid(std::string_view text);

    PluginCommon::LimitedText text{MOST_BYTES};
};

/// The result of a command for all clients.
struct ReachedClients final : public Zu::Params::Group
{
public:
    explicit ReachedClients(uint64 count);
    ~ReachedClients() override;

    Zu::Params::Value<uint64> clients; ///< clients connected at the time of the command
};

/// The commands that the service itself offers.
class AsciiCommands final : public ZuControl::IControlActionTarget
{
public:
    static constexpr char const* DISCONNECT_ALL = "disconnectAll";
    static constexpr char const* SEND_TEXT = "sendText";

    /// Each handler carries out a command and returns the number of clients that it reaches. Handlers must be
    /// thread-safe.
    struct Handlers
    {
        std::function<uint64()> disconnectAll;
        std::function<uint64(std::string const& text)> sendText; ///< `text` has been checked
    };

    explicit AsciiCommands(Handlers newHandlers);
    ~AsciiCommands() override;
    AsciiCommands(AsciiCommands const&) = delete;
    AsciiCommands& operator=(AsciiCommands const&) = delete;

    std::vector<ZuControl::ControlActionInfo> ListActions() const override;

    /// Throws `Zu::Status::NOT_FOUND` for an unknown command.
    std::shared_ptr<Zu::Params::Group> GetActionParams(std::string const& id) const override;

    /// Returns a ReachedClients. Throws `Zu::Status::NOT_FOUND` for an unknown command, and `Zu::Status::BAD_ARGUMENT`
    /// for a text that cannot be sent.
    std::shared_ptr<Zu::Params::Group> InvokeAction(std::string const& id, Zu::Params::Group const& args) override;

private:
    Handlers const handlers;
};

} // namespace AsciiTcp
