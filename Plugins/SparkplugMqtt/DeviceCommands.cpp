#include "Plugins/SparkplugMqtt/DeviceCommands.h"

#include <array>
#include <optional>
#include <string_view>

namespace SparkplugMqtt
{

using namespace ZuControl::ControlProtocol;

namespace
{

struct Writable
{
    uint64 alias;
    std::string_view name;
    ControlRegisterCommandId id; // CommandNone: the request id
    DataType type;
};

constexpr std::array<Writable, 7> WRITABLES = {{
    {10, "Command/Request Id", CommandNone, DataType::UINT64},
    {11, "Command/Start", CommandStart, DataType::BOOLEAN},
    {12, "Command/Stop", CommandStop, DataType::BOOLEAN},
    {13, "Command/Align", CommandAlign, DataType::BOOLEAN},
    {14, "Command/Clear Alignment", CommandClearAlign, DataType::BOOLEAN},
    {15, "Command/Trigger", CommandSoftwareTrigger, DataType::BOOLEAN},
    {16, "Command/Load Job", CommandLoadJob, DataType::STRING},
}};

constexpr uint64 FIRST_RESULT_ALIAS = 20;

Writable const* Find(CommandMetric const& metric)
{
    for (Writable const& writable : WRITABLES)
    {
        if (metric.name.empty() ? metric.alias == writable.alias : metric.name == writable.name)
        {
            return &writable;
        }
    }
    return nullptr;
}

std::string ShownName(CommandMetric const& metric)
{
    return metric.name.empty() ? "alias " + std::to_string(metric.alias.value_or(0)) : metric.name;
}

MetricValue IdleValue(DataType type)
{
    switch (type)
    {
    case DataType::BOOLEAN:
        return false;
    case DataType::STRING:
        return std::string_view();
    default:
        return uint64{0};
    }
}

/// Takes the value of a command. Returns false if it has the wrong type.
bool TakeValue(DeviceCommand& command, Writable const& writable, CommandMetric const& metric)
{
    bool const* const flag = std::get_if<bool>(&metric.value);
    std::string const* const text = std::get_if<std::string>(&metric.value);
    if (writable.type == DataType::BOOLEAN ? flag == nullptr : text == nullptr)
    {
        return false;
    }
    if (flag != nullptr && !*flag)
    {
        return true; // the value that the command has without a request
    }
    if (!command.name.empty())
    {
        command.refusal = "A message has one command at most";
        return true;
    }
    command.name = writable.name;
    command.id = writable.id;
    command.argument = text != nullptr ? *text : "";
    if (text != nullptr && text->empty())
    {
        command.refusal = "A load needs the name of a job";
    }
    if (command.argument.size() >= ControlRegisterCommandData::TEXT_SIZE)
    {
        command.refusal = "The name of a job has at most 63 bytes";
    }
    return true;
}

} // namespace

DeviceCommand InterpretCommand(std::vector<CommandMetric> const& metrics)
{
    DeviceCommand command;
    for (CommandMetric const& metric : metrics)
    {
        Writable const* const writable = Find(metric);
        if (writable == nullptr)
        {
            command.refusal = "There is no writable metric " + ShownName(metric);
            command.name = command.name.empty() ? ShownName(metric) : command.name;
            continue;
        }
        uint64 const* const number = std::get_if<uint64>(&metric.value);
        bool const isRequestId = writable->id == CommandNone;
        bool isTaken = false;
        if (isRequestId && number != nullptr)
        {
            command.requestId = *number;
            isTaken = true;
        }
        else if (!isRequestId)
        {
            isTaken = TakeValue(command, *writable, metric);
        }
        if (!isTaken)
        {
            command.refusal = std::string(writable->name) + " takes no value of this type";
            command.name = command.name.empty() ? writable->name : command.name;
        }
    }
    return command;
}

void WriteCommands(MetricWriter& birth, uint64 utcMsec, std::vector<uint64>& aliases)
{
    for (Writable const& writable : WRITABLES)
    {
        birth.Add({.name = writable.name,
                   .alias = writable.alias,
                   .timestampMsec = utcMsec,
                   .type = writable.type,
                   .value = IdleValue(writable.type)});
        aliases.push_back(writable.alias);
    }
}

void WriteResult(MetricWriter& writer, CommandResult const& result, uint64 utcMsec, bool isBirth,
                 std::vector<uint64>& aliases)
{
    struct Shown
    {
        std::string_view name;
        DataType type;
        MetricValue value;
    };
    std::array<Shown, 4> const rows = {{
        {"Result/Request Id", DataType::UINT64, result.requestId},
        {"Result/Command", DataType::STRING, std::string_view(result.command)},
        {"Result/Status", DataType::UINT64, static_cast<uint64>(result.status)},
        {"Result/Text", DataType::STRING, std::string_view(result.text)},
    }};
    for (std::size_t i = 0; i < rows.size(); ++i)
    {
        uint64 const alias = FIRST_RESULT_ALIAS + i;
        writer.Add({.name = isBirth ? rows[i].name : std::string_view(),
                    .alias = alias,
                    .timestampMsec = utcMsec,
                    .type = isBirth ? std::optional(rows[i].type) : std::nullopt,
                    .value = rows[i].value});
        if (isBirth)
        {
            aliases.push_back(alias);
        }
    }
}

} // namespace SparkplugMqtt
