#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Commands/SourceRow.h"
#include "Ctl/Outcome/Failure.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>

namespace ZuCtl
{

namespace
{

using nlohmann::json;

constexpr double MAX_RATE_HZ = 20;
constexpr double MAX_COUNT = 1e9;

/// Counts what is shown; without `--count` there is no end.
class Countdown final
{
public:
    explicit Countdown(Call const& call)
        : left(call.Number("--count", std::numeric_limits<double>::infinity(), 1, MAX_COUNT))
    {
    }

    bool IsOver() noexcept ///< after each one
    {
        left -= 1;
        return left < 1;
    }

private:
    double left;
};

std::string EventText(json const& event)
{
    return Shown(event, "path") + (event.value("type", 0) == 4 ? " and all below it" : "") + " has changed";
}

void WatchEvents(Call& call)
{
    Countdown countdown(call);
    bool isOver = false;
    call.Device().Stream("/events", [&](json const& event) {
        call.WantsJson() ? call.Out().JsonLine(event) : call.Out().Line(EventText(event));
        call.Out().Flush();
        isOver = countdown.IsOver();
        return !isOver;
    });
    if (!isOver)
    {
        throw Failure(ExitStatus::UNREACHABLE, "The sensor has ended the stream");
    }
}

std::string RateQuery(Call const& call)
{
    return "?rate=" + json(call.Number("--rate", 1, 0.1, MAX_RATE_HZ)).dump();
}

void WatchValue(Call& call)
{
    std::string const id = call.Text("SOURCE");
    std::string const path = "/datasources/" + Escaped(id);
    std::string const unit = Shown(call.Device().Get(path), "unit");
    Countdown countdown(call);
    std::string end = "The sensor has ended the stream";
    bool isOver = false;
    call.Device().Stream(path + RateQuery(call), [&](json const& value) {
        if (value.contains("text"))
        {
            end = value.at("text");
            return false;
        }
        call.WantsJson()
            ? call.Out().JsonLine(value)
            : call.Out().Line(id + "  " + SourceValue(value) + ' ' + unit + "  " + DecisionCell(value).text);
        call.Out().Flush();
        isOver = countdown.IsOver();
        return !isOver;
    });
    if (!isOver)
    {
        throw Failure(ExitStatus::REFUSED, end);
    }
}

void ShowLive(Call& call, json const& sensor, json const& sources)
{
    Printer& out = call.Out();
    if (call.WantsJson())
    {
        out.JsonLine({{"sensor", WithoutLinks(sensor)}, {"sources", sources}});
        return;
    }
    json const& profiles = sensor.at("profiles");
    out.Clear();
    out.Line(Shown(sensor, "state") + ", job " + Shown(sensor, "job") + ", " + Rounded(profiles.at("rateHz")) +
                 " profiles per second, " + Shown(profiles, "missed") + " missed",
             Colour::BOLD);
    std::vector<std::vector<Cell>> rows;
    for (json const& source : sources)
    {
        rows.push_back(SourceRow(source));
    }
    out.Table({"SOURCE", "VALUE", "UNIT", "DECISION"}, rows);
    out.Flush();
}

void WatchLive(Call& call)
{
    auto const period = std::chrono::duration<double>(1 / call.Number("--rate", 1, 0.1, MAX_RATE_HZ));
    Countdown countdown(call);
    auto next = std::chrono::steady_clock::now();
    do
    {
        std::this_thread::sleep_until(next);
        ShowLive(call, call.Device().Get("/sensor"), call.Device().Get("/datasources").at("dataSources"));
        next += std::chrono::duration_cast<std::chrono::steady_clock::duration>(period);
        next = std::max(next, std::chrono::steady_clock::now()); // pictures that a slow sensor has missed are left out
    } while (!countdown.IsOver());
}

} // namespace

std::vector<Command> WatchCommands()
{
    using enum Argument::Kind;
    using enum Argument::Values;
    Argument const count{OPTION, "--count", "N", "end after so many lines or pictures; without it Ctrl+C ends",
                         TEXT,   {}};
    Argument const rate{OPTION, "--rate", "HZ", "how many a second, from 0.1 to 20 (1)", TEXT, {}};
    return {
        {"watch", "show changes, values or the running sensor until Ctrl+C", "", {}, nullptr},
        {"watch events", "show each change of a document", "", {count}, &WatchEvents},
        {"watch values",
         "show the values of a data source",
         "",
         {{WORD, "SOURCE", "", "the data source, such as profile/zMax", TEXT, {}}, rate, count},
         &WatchValue},
        {"watch live",
         "show the state of the sensor and all values",
         "On a terminal each picture takes the place of the one before.",
         {rate, count},
         &WatchLive},
    };
}

} // namespace ZuCtl
