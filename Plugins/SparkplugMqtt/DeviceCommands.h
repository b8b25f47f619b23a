#pragma once

#include "Plugins/SparkplugMqtt/CommandPayload.h"
#include "Plugins/SparkplugMqtt/MetricWriter.h"
#include "ZuControl/ControlProtocol/ControlRegisterCommandData.h"
#include "wApi/wTypes.h"

#include <string>
#include <vector>

namespace SparkplugMqtt
{

/// The state of a command as the metrics "Result/..." show it.
struct CommandResult
{
    uint64 requestId = 0;
    std::string command;
    ZuControl::ControlProtocol::ControlRegisterCommandStatus status = ZuControl::ControlProtocol::CommandStatusNone;
    std::string text; ///< why it failed

    bool operator==(CommandResult const&) const = default;
};

/// A received command.
struct DeviceCommand
{
    uint64 requestId = 0;
    std::string name; ///< the metric; empty: the message has no command
    ZuControl::ControlProtocol::ControlRegisterCommandId id = ZuControl::ControlProtocol::CommandNone;
    std::string argument;
    std::string refusal; ///< not empty: the command cannot be carried out, and why

    bool operator==(DeviceCommand const&) const = default;
};

/// Interprets the metrics of a DCMD message: "Command/Request Id", if present, and one command. Start, Stop, Align,
/// Clear Alignment and Trigger are true; Load Job is the name of a job. A command with the value false is none. A metric
/// may be named by its name or its alias.
DeviceCommand InterpretCommand(std::vector<CommandMetric> const& metrics);

/// Appends the metrics of the commands, with the values of no command, and their aliases.
void WriteCommands(MetricWriter& birth, uint64 utcMsec, std::vector<uint64>& aliases);

/// Appends the metrics of a result. A birth has their names and types, and gets their aliases.
void WriteResult(MetricWriter& writer, CommandResult const& result, uint64 utcMsec, bool isBirth,
                 std::vector<uint64>& aliases);

} // namespace SparkplugMqtt
