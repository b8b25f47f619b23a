#include "Plugins/SparkplugMqtt/CommandRunner.h"

#include "ZuApi/Exception.h"
#include "ZuControl/Control/ControlProtocolOperations.h"

#include <algorithm>
#include <utility>

namespace SparkplugMqtt
{

using namespace ZuControl::ControlProtocol;

CommandRunner::CommandRunner(ZuControl::ControlProtocolOperations& usedOperations,
                             ZuControl::ZuEthernetProtocol ownProtocol, Handlers newHandlers)
    : handlers(std::move(newHandlers)), ends(usedOperations.SubscribeToOperationEnd(ownProtocol, [this](int status) {
          End(status == Zu::Status::SUCCESS);
      }))
{
}

void CommandRunner::Begin(DeviceCommand const& command)
{
    if (command.name.empty())
    {
        return;
    }
    CommandResult result{command.requestId, command.name, CommandStatusFailed, command.refusal};
    if (!command.refusal.empty())
    {
        Add(std::move(result));
        return;
    }
    {
        Zu::MutexLock const guard(lock);
        if (isRunning)
        {
            result.text = "A command of a host is still running";
            results.push_back(std::move(result));
            return;
        }
        isRunning = true; // first: the operation may end before `start` returns
        running = result;
        result.status = CommandStatusInProgress;
        results.push_back(result);
    }
    try
    {
        Command data{};
        data.commandId = command.id;
        std::ranges::copy(command.argument, data.text);
        handlers.start(data);
    }
    catch (...)
    {
        result.status = CommandStatusFailed;
        result.text = Zu::CaughtText();
        Zu::MutexLock const guard(lock);
        isRunning = false;
        results.push_back(std::move(result));
    }
}

bool CommandRunner::TakeResult(CommandResult& result)
{
    Zu::MutexLock const guard(lock);
    if (results.empty())
    {
        return false;
    }
    result = std::move(results.front());
    results.pop_front();
    return true;
}

void CommandRunner::Add(CommandResult result)
{
    Zu::MutexLock const guard(lock);
    results.push_back(std::move(result));
}

void CommandRunner::End(bool isDone)
{
    {
        Zu::MutexLock const guard(lock);
        if (!isRunning)
        {
            return; // a scanner may report an alignment twice
        }
        isRunning = false;
        running.status = isDone ? CommandStatusDone : CommandStatusFailed;
        running.text = isDone ? "" : "The operation failed";
        results.push_back(running);
    }
    handlers.ended();
}

} // namespace SparkplugMqtt
