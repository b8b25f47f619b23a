#pragma once

#include "Support/CallLog.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"
#include "ZuScan/Sensor.h"

#include <functional>
#include <map>
#include <nlohmann/json.hpp>

namespace ZuTest
{

/// A sensor that records each command with its arguments, as `name {"index":0}`. It answers the command "name" with the
/// result of `on["name"]`, or with null if the test has not set that.
class FakeSensor final : public ZuScan::ISensor, public ZuScan::ICommandTarget
{
public:
    using Result = std::shared_ptr<Zu::Params::Group>;

    explicit FakeSensor(CallLog& sharedCalls) : calls(sharedCalls)
    {
    }

    ZuScan::ICommandTarget* CommandTarget() override
    {
        return takesCommands ? this : nullptr;
    }

    std::vector<ZuScan::ActionInfo> ListActions() const override
    {
        return {};
    }

    Result GetActionParams(std::string const& /*id*/) const override
    {
        return nullptr;
    }

    Result InvokeAction(std::string const& id, Result params) override
    {
        calls.Add(id + ' ' + Zu::Properties::JsonSerializer::Serialize(*params).dump());
        auto const position = on.find(id);
        return position == on.end() ? nullptr : position->second(*params);
    }

    bool takesCommands = true;
    std::map<std::string, std::function<Result(Zu::Params::Group const& params)>> on;

private:
    CallLog& calls;
};

} // namespace ZuTest
