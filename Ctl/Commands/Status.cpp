#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Shown.h"

namespace ZuCtl
{

namespace
{

using nlohmann::json;

Colour ColourOf(bool isGood)
{
    return isGood ? Colour::GOOD : Colour::BAD;
}

void ShowHealth(Printer& out, json const& health)
{
    bool const isWell = health.at("faults").empty();
    out.Line("health    " + std::string(isWell ? "ok" : "faulty") + ", up " + Duration(health.at("upTimeSec")),
             ColourOf(isWell));
    for (json const& fault : health.at("faults"))
    {
        out.Line("          " + fault.get<std::string>(), Colour::BAD);
    }
}

void ShowSensor(Printer& out, json const& sensor)
{
    std::string const state = sensor.at("state");
    json const& profiles = sensor.at("profiles");
    out.Line("sensor    " + state + ", " + Rounded(profiles.at("rateHz")) + " profiles per second, " +
                 profiles.at("missed").dump() + " missed",
             ColourOf(state != "error"));
    out.Line("job       " + sensor.at("job").get<std::string>());
    out.Line("authority " + sensor.at("authority").at("rest").get<std::string>());
    if (json const& operation = sensor.at("operation"); !operation.is_null())
    {
        out.Line("operation " + operation.at("what").get<std::string>() + ", for " + Rounded(operation.at("seconds")) +
                 " s");
    }
}

void ShowStatus(Call& call)
{
    Sensor& device = call.Device();
    json const root = device.Get("/");
    json const health = device.Health();
    json const sensor = device.Get("/sensor");
    json const problems = device.Get("/problems").at("problems");
    json const caller = device.Get("/session");
    if (call.PrintedJson({{"address", device.Client().ServerAddress().Url()},
                          {"version", root.at("version")},
                          {"health", WithoutLinks(health)},
                          {"sensor", WithoutLinks(sensor)},
                          {"problems", problems},
                          {"caller", WithoutLinks(caller)}}))
    {
        return;
    }
    Printer& out = call.Out();
    out.Line(root.at("product").get<std::string>() + ' ' + root.at("version").get<std::string>() + " at " +
                 device.Client().ServerAddress().Url(),
             Colour::BOLD);
    ShowHealth(out, health);
    ShowSensor(out, sensor);
    out.Line("caller    " + caller.at("caller").get<std::string>() + ", " + caller.at("role").get<std::string>());
    out.Line("problems  " + std::to_string(problems.size()), ColourOf(problems.empty()));
}

} // namespace

Command StatusCommand()
{
    return {"status", "show whether the sensor is well, and what it does", "", {}, &ShowStatus};
}

} // namespace ZuCtl
