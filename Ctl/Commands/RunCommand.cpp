#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/CommandPath.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Commands/TypedValue.h"
#include "Ctl/Outcome/Failure.h"

#include <chrono>
#include <thread>
#include <utility>

namespace ZuCtl
{

namespace
{

using nlohmann::json;
using namespace std::chrono_literals;

/// The arguments of a command: one document, or KEY=VALUE words whose types follow `present`.
json ArgumentsOf(std::vector<std::string> const& words, json const& present)
{
    if (words.size() == 1 && words[0].starts_with('{'))
    {
        json document = json::parse(words[0], nullptr, false);
        if (document.is_discarded())
        {
            throw Failure(ExitStatus::USAGE, "'" + words[0] + "' is no document in JSON");
        }
        return document;
    }
    json document = json::object();
    for (std::string const& word : words)
    {
        std::size_t const equals = word.find('=');
        std::string const key = word.substr(0, equals);
        if (equals == std::string::npos || !present.contains(key))
        {
            throw Failure(ExitStatus::USAGE,
                          "'" + word + "' is not of the form KEY=VALUE; the command takes " + present.dump());
        }
        document[key] = TypedValue(key, word.substr(equals + 1), present.at(key));
    }
    return document;
}

/// Waits until an operation on the sensor has ended. Other answers of commands have no number.
json EndOf(Sensor& device, json answer)
{
    while (answer.is_object() && answer.value("result", "") == "running")
    {
        std::this_thread::sleep_for(50ms);
        answer = device.Get("/operations/" + answer.at("number").dump());
    }
    return answer;
}

void ListCommands(Call& call, std::string const& path)
{
    json commands = json::object();
    json const list = call.Device().Get(path).at("_embedded").at("item");
    for (json const& command : list)
    {
        commands[command.at("id").get<std::string>()] = command.at("parameters");
    }
    if (call.PrintedJson(commands))
    {
        return;
    }
    std::vector<std::vector<Cell>> rows;
    for (auto const& [id, parameters] : commands.items())
    {
        rows.push_back({id, parameters.dump()});
    }
    call.Out().Table({"COMMAND", "ARGUMENTS AND THEIR PRESENT VALUES"}, rows);
}

void RunCommand(Call& call)
{
    std::string const path = CommandPath(call.Text("COMMAND"));
    if (path.ends_with("/commands"))
    {
        ListCommands(call, path);
        return;
    }
    Sensor& device = call.Device();
    json const arguments = ArgumentsOf(call.Texts("ARGUMENTS"), device.Get(path).at("parameters"));
    json answer = device.Change("POST", path, arguments);
    if (!call.Has("--no-wait"))
    {
        answer = EndOf(device, std::move(answer));
    }
    answer = WithoutLinks(answer);
    if (answer.is_object() && answer.value("result", "") == "failed")
    {
        throw Failure(ExitStatus::REFUSED, Shown(answer, "what") + " has failed: " + Shown(answer, "text"));
    }
    if (!call.PrintedJson(answer) && answer.is_object() && answer.contains("result"))
    {
        call.Out().Line(Shown(answer, "what") + ": " + Shown(answer, "result") + " after " +
                        Rounded(answer.at("seconds")) + " s");
    }
    else if (!call.WantsJson() && answer.is_object() && !answer.empty())
    {
        call.Out().Line(answer.dump());
    }
    else if (!call.WantsJson())
    {
        call.Out().Line("done");
    }
}

} // namespace

Command CallCommand()
{
    using enum Argument::Kind;
    using enum Argument::Values;
    return {
        "call",
        "run a command of the sensor or of a service",
        "COMMAND is sensor/start, SERVICE/NAME, SERVICE/outputs/NAME or SERVICE/registerAssembly-0/NAME. Without NAME, "
        "as in sensor/, the commands are listed. Waits for the end of an operation on the sensor.",
        {{WORD, "COMMAND", "", "the command, such as sensor/start", TEXT, {}},
         {OPTIONAL_WORDS, "ARGUMENTS", "", "KEY=VALUE, or one document in JSON", TEXT, {}},
         {FLAG, "--no-wait", "", "do not wait for the end of the operation", TEXT, {}}},
        &RunCommand};
}

} // namespace ZuCtl
