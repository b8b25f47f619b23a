#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Masked.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Outcome/Failure.h"
#include "Ctl/Settings/PrivateFile.h"

#include <utility>

namespace ZuCtl
{

namespace
{

using nlohmann::json;

/// A document of the sensor, or the reason why the sensor did not give it.
json Document(Sensor& device, char const* path)
{
    try
    {
        HttpAnswer const answer = device.GetText(path);
        bool const isJson = answer.Header("content-type").find("json") != std::string::npos;
        return isJson ? WithoutLinks(device.Parse(answer.body)) : json(answer.body);
    }
    catch (Failure const& failure)
    {
        if (failure.Status() == ExitStatus::UNREACHABLE || failure.Status() == ExitStatus::NOT_TRUSTED)
        {
            throw;
        }
        return {{"refused", failure.what()}};
    }
}

/// Services with their parameters and maps, which `WithoutLinks` would cut.
json Services(Sensor& device)
{
    json services = json::array();
    json const controls = device.Get("/controls");
    for (json const& item : controls.at("_embedded").at("item"))
    {
        json service = WithoutLinks(item);
        json const embedded = item.value("_embedded", json::object());
        for (auto const& [name, part] : embedded.items())
        {
            service[name] = part;
        }
        services.push_back(std::move(service));
    }
    return services;
}

void MakeBundle(Call& call)
{
    constexpr char const* PATHS[] = {"/",
                                     "/health",
                                     "/problems",
                                     "/log",
                                     "/sensor",
                                     "/sensor/limits",
                                     "/sensor/authority",
                                     "/operations",
                                     "/scanners",
                                     "/datasources",
                                     "/jobs",
                                     "/session",
                                     "/routes",
                                     "/metrics",
                                     "/controls/hardware/0"};
    std::string const file = call.Text("FILE");
    CheckFileToWrite(file, call.Has("--force")); // before the requests
    Sensor& device = call.Device();
    json bundle{{"madeBy", VersionText().substr(0, VersionText().size() - 1)},
                {"address", device.Client().ServerAddress().Url()},
                {"services", Services(device)}};
    for (char const* const path : PATHS)
    {
        bundle["documents"][path] = Document(device, path);
    }
    std::string const text = Masked(std::move(bundle)).dump(2, ' ', true, json::error_handler_t::replace);
    WritePrivateFile(file, text + '\n', call.Has("--force"));
    call.Done("The bundle is in " + file + ": read it before you send it", {{"file", file}});
}

} // namespace

Command SupportCommand()
{
    using enum Argument::Kind;
    using enum Argument::Values;
    return {"support",
            "write versions, configuration, problems, log and metrics into a file for the maker of a sensor",
            "The file has no secrets: users and tokens are not in it, and texts that look like a password or a token "
            "are masked. It has names of jobs and addresses of the plant.",
            {{WORD, "FILE", "", "the file, in JSON", FILES, {}},
             {FLAG, "--force", "", "replace the file if there is one", TEXT, {}}},
            &MakeBundle};
}

} // namespace ZuCtl
