#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/ServiceStatus.h"
#include "Ctl/Commands/Shown.h"

#include <utility>

namespace ZuCtl
{

namespace
{

using nlohmann::json;

json ListOf(json const& controls)
{
    json list = json::array();
    for (json const& item : controls.at("_embedded").at("item"))
    {
        json service = WithoutLinks(item);
        service["state"] = ServiceStateText(service.at("status"));
        list.push_back(std::move(service));
    }
    return list;
}

std::string ListensAt(json const& parameters)
{
    return parameters.contains("port") ? Shown(parameters, "address") + ':' + Shown(parameters, "port") : "-";
}

void ShowServices(Call& call)
{
    json const services = ListOf(call.Device().Get("/controls"));
    if (call.PrintedJson(services))
    {
        return;
    }
    std::vector<std::vector<Cell>> rows;
    for (json const& service : services)
    {
        bool const isEnabled = service.at("enabled");
        int const status = service.at("status");
        Colour const colour = IsFailed(status) ? Colour::BAD : isEnabled ? Colour::GOOD : Colour::PLAIN;
        rows.push_back({service.at("id").get<std::string>(),
                        std::string(isEnabled ? "yes" : "no"),
                        {service.at("state").get<std::string>(), colour},
                        ListensAt(service.at("parameters")),
                        service.at("displayName").get<std::string>()});
    }
    call.Out().Table({"TYPE", "ENABLED", "STATE", "LISTENS AT", "NAME"}, rows);
}

void Switch(Call& call, bool isEnabled)
{
    for (std::string const& type : call.Texts("TYPE"))
    {
        json const changed = call.Device().Change("PUT", "/controls/" + Escaped(type), {{"enabled", isEnabled}});
        std::string const state = ServiceStateText(changed.at("status"));
        call.Done(type + ": " + state, {{"id", type}, {"enabled", changed.at("enabled")}, {"state", state}});
    }
}

Argument TypesArgument()
{
    return {Argument::Kind::WORDS, "TYPE", "", "the service, such as ModbusTcp", Argument::Values::TEXT, {}};
}

} // namespace

Command ServicesCommand()
{
    return {"services", "list the services for PLCs and their states", "", {}, &ShowServices};
}

Command EnableCommand()
{
    return {"enable",
            "start services",
            "A service that cannot be started is an error, with the reason.",
            {TypesArgument()},
            [](Call& call) { Switch(call, true); }};
}

Command DisableCommand()
{
    return {"disable", "stop services", "", {TypesArgument()}, [](Call& call) { Switch(call, false); }};
}

} // namespace ZuCtl
