#pragma once

#include "Support/CallLog.h"
#include "ZuControl/Control/IControlSystemInterface.h"
#include "wApi/wMutex.h"

#include <functional>
#include <map>

namespace ZuTest
{

/// Records its calls. A call "X" then runs `on["X"]` if the test has set it. Tests set `on` before other threads call.
class FakeSystemInterface final : public ZuControl::IControlSystemInterface
{
public:
    explicit FakeSystemInterface(CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    void Start() override
    {
        Note("Start");
    }

    void Stop() override
    {
        Note("Stop");
    }

    void FactoryRestore() override
    {
        Note("FactoryRestore");
    }

    void Restart() override
    {
        Note("Restart");
    }

    void LoadJob(std::string const& name) override
    {
        Note("LoadJob(" + name + ")");
    }

    void Stats(SystemStats& filled) override
    {
        Note("Stats");
        Zu::MutexLock const guard(lock);
        filled = stats;
    }

    void SetNextIpConfig(wIpConfig const& config) override
    {
        Note("SetNextIpConfig(" + std::to_string(config.address[3]) + ")");
    }

    void SetStats(SystemStats newStats)
    {
        Zu::MutexLock const guard(lock);
        stats = std::move(newStats);
    }

    std::map<std::string, std::function<void()>> on;

private:
    void Note(std::string const& call)
    {
        calls.Add(call);
        if (auto const position = on.find(call); position != on.end())
        {
            position->second();
        }
    }

    CallLog& calls;
    Zu::Mutex lock; // guards the members below, which a fetch reads on another thread
    SystemStats stats;
};

} // namespace ZuTest
