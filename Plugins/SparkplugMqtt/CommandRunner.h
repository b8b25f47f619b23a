#pragma once

#include "Plugins/SparkplugMqtt/DeviceCommands.h"
#include "ZuApi/Event.h"
#include "ZuControl/Control/ZuEthernetProtocol.h"
#include "wApi/wMutex.h"

#include <deque>
#include <functional>
#include <string>

namespace ZuControl
{
class ControlProtocolOperations;
}

namespace SparkplugMqtt
{

/// Carries out the commands of hosts, one at a time, and collects their results: one when the command begins, one when
/// it ends.
///
/// Threads: the network thread calls; ends arrive on "CtlProtoOp.Disp".
class CommandRunner final
{
public:
    using Command = ZuControl::ControlProtocol::ControlRegisterCommandData;

    struct Handlers
    {
        std::function<void(Command const&)> start; ///< begins an operation and does not wait; throws if it is refused
        std::function<void()> ended;               ///< there is a new result; must not block
    };

    /// `operations` outlives the object.
    CommandRunner(ZuControl::ControlProtocolOperations& usedOperations, ZuControl::ZuEthernetProtocol ownProtocol,
                  Handlers newHandlers);
    CommandRunner(CommandRunner const&) = delete;
    CommandRunner& operator=(CommandRunner const&) = delete;

    /// Begins the command. A refused command ends as failed, as does a command that comes while another one runs.
    void Begin(DeviceCommand const& command);

    /// Takes the oldest result. Returns false if there is none.
    bool TakeResult(CommandResult& result);

private:
    void Add(CommandResult result);
    void End(bool isDone);

    Handlers const handlers;

    Zu::Mutex lock; // a leaf
    std::deque<CommandResult> results ZU_GUARDED_BY(lock);
    CommandResult running ZU_GUARDED_BY(lock);
    bool isRunning ZU_GUARDED_BY(lock) = false;

    Zu::Subscription ends; // last, so that its destructor waits for a report first
};

} // namespace SparkplugMqtt
