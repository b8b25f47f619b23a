#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/TypedValue.h"
#include "Ctl/Outcome/Failure.h"

#include <map>
#include <utility>

namespace ZuCtl
{

namespace
{

using nlohmann::json;

struct Setting
{
    std::string type;
    std::string key;
    std::string value;
};

Setting ParseSetting(std::string const& text)
{
    std::size_t const equals = text.find('=');
    std::size_t const point = text.substr(0, equals).find('.');
    if (equals == std::string::npos || point == std::string::npos || point == 0 || point + 1 == equals)
    {
        throw Failure(ExitStatus::USAGE, "'" + text + "' is not of the form TYPE.KEY=VALUE");
    }
    return {text.substr(0, point), text.substr(point + 1, equals - point - 1), text.substr(equals + 1)};
}

/// The present value of a parameter, whose type decides how a text is read.
json const& Present(json const& parameters, Setting const& setting)
{
    auto const found = parameters.find(setting.key);
    if (found != parameters.end())
    {
        return *found;
    }
    std::string known;
    for (auto const& [key, value] : parameters.items())
    {
        known += (known.empty() ? "" : ", ") + key;
    }
    throw Failure(ExitStatus::REFUSED, setting.type + " has no parameter '" + setting.key + "'; it has " + known);
}

void SetParameters(Call& call)
{
    std::map<std::string, std::vector<Setting>> settings;
    for (std::string const& text : call.Texts("SETTING"))
    {
        Setting setting = ParseSetting(text);
        settings[setting.type].push_back(std::move(setting));
    }
    std::map<std::string, json> changes; // all values are read before the first service changes
    for (auto const& [type, changed] : settings)
    {
        json const parameters = call.Device().Get("/controls/" + Escaped(type)).at("parameters");
        for (Setting const& setting : changed)
        {
            changes[type][setting.key] = TypedValue(setting.key, setting.value, Present(parameters, setting));
        }
    }
    json result = json::object();
    for (auto const& [type, parameters] : changes)
    {
        json const document = call.Device().Change("PUT", "/controls/" + Escaped(type), {{"parameters", parameters}});
        result[type] = document.at("parameters");
        for (auto const& [key, value] : parameters.items())
        {
            if (!call.WantsJson())
            {
                call.Out().Line(type + '.' + key + " = " + result[type].at(key).dump());
            }
        }
    }
    call.PrintedJson(result);
}

} // namespace

Command SetCommand()
{
    return {"set",
            "change parameters of services",
            "All parameters of one service change together: when one value is refused, none of them changes.",
            {{Argument::Kind::WORDS,
              "SETTING",
              "",
              "TYPE.KEY=VALUE, such as ModbusTcp.port=502",
              Argument::Values::TEXT,
              {}}},
            &SetParameters};
}

} // namespace ZuCtl
