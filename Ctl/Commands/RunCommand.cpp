#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/CommandPath.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Commands/TypedValue.h"
#include "Ctl/Outcome/Failure.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>
#include <utility>

namespace ZuCtl
{

namespace
{

using nlohmann::json;
using namespace nlohmann::literals;
using Seconds = std::chrono::duration<double>;

constexpr double MAX_WAIT_SEC = 86400;
constexpr Seconds PATIENCE{2}; // then a person is told what the program waits for
constexpr Seconds FIRST_PAUSE{0.02};
constexpr Seconds LONGEST_PAUSE{0.5};

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

/// The path of the operation that a command of the sensor has begun. Empty for the answer of another command, which may
/// have members of the same names.
std::string OperationOf(json const& answer)
{
    std::string path = answer.is_object() ? answer.value("/_links/self/href"_json_pointer, "") : "";
    return path.starts_with("/operations/") ? path : "";
}

/// Waits until the operation has ended, and returns its document. Throws `Failure` with `ExitStatus::UNREACHABLE` after the
/// `longest` wait.
json EndOf(Call& call, json operation, std::string const& path, Seconds longest)
{
    auto const begin = std::chrono::steady_clock::now();
    bool isTold = call.WantsJson();
    for (Seconds pause = FIRST_PAUSE; operation.at("result") == "running"; pause = std::min(2 * pause, LONGEST_PAUSE))
    {
        Seconds const waited = std::chrono::steady_clock::now() - begin;
        if (waited >= longest)
        {
            throw Failure(ExitStatus::UNREACHABLE, Shown(operation, "what") + " has not ended within " +
                                                       Rounded(longest.count()) +
                                                       " s. Its end will be shown by: zucontrolctl get " + path);
        }
        if (waited >= PATIENCE && !std::exchange(isTold, true))
        {
            call.Out().Note(Shown(operation, "what") + " is running. Ctrl+C ends the waiting, not the operation");
        }
        std::this_thread::sleep_for(std::min(pause, longest - waited));
        operation = call.Device().Get(path);
    }
    return operation;
}

std::string OperationText(json const& operation)
{
    return Shown(operation, "what") + ": " + Shown(operation, "result") + " after " + Rounded(operation.at("seconds")) +
           " s";
}

std::string AnswerText(json const& answer)
{
    return answer.is_object() && !answer.empty() ? answer.dump() : "done";
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
    Seconds const longestWait(call.Number("--wait", std::numeric_limits<double>::infinity(), 0, MAX_WAIT_SEC));
    Sensor& device = call.Device();
    json const arguments = ArgumentsOf(call.Texts("ARGUMENTS"), device.Get(path).at("parameters"));
    json answer = device.Change("POST", path, arguments);
    std::string const operation = OperationOf(answer);
    if (!operation.empty() && !call.Has("--no-wait"))
    {
        answer = EndOf(call, std::move(answer), operation, longestWait);
    }
    answer = WithoutLinks(answer);
    if (!operation.empty() && answer.at("result") == "failed")
    {
        throw Failure(ExitStatus::REFUSED, Shown(answer, "what") + " has failed: " + Shown(answer, "text"));
    }
    if (!call.PrintedJson(answer))
    {
        call.Out().Line(operation.empty() ? AnswerText(answer) : OperationText(answer));
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
         {OPTION, "--wait", "SECONDS", "how long to wait for the end of the operation at most (without end)", TEXT, {}},
         {FLAG, "--no-wait", "", "do not wait for the end of the operation", TEXT, {}}},
        &RunCommand};
}

} // namespace ZuCtl
