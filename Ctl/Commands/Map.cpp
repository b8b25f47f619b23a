#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Commands/SourceRow.h"
#include "Ctl/Outcome/Failure.h"

#include <algorithm>
#include <map>

namespace ZuCtl
{

namespace
{

using nlohmann::json;

/// What the sensor knows besides its data sources and shows in registers.
std::string StateOf(std::string const& type, json const& sensor)
{
    if (type == "System")
    {
        return Shown(sensor, "state") + ", job " + Shown(sensor, "job");
    }
    return type == "Scanner" ? Shown(sensor, "alignment") : "-";
}

/// Adds the newest value to an entry of a map.
class LiveValues final
{
public:
    explicit LiveValues(Sensor& device) : sensor(device.Get("/sensor"))
    {
        json const list = device.Get("/datasources").at("dataSources");
        for (json const& source : list)
        {
            sources[source.at("id")] = source;
        }
    }

    json Entry(json const& block, char const* sourceMember, json const& registers) const
    {
        json entry{{"outputId", block.at("outputId")}, {"registers", registers}, {"type", Shown(block, "type")}};
        std::string const id = block.value(sourceMember, "");
        auto const source = sources.find(id);
        bool const isKnown = source != sources.end();
        entry["source"] = id.empty() ? json() : json(id);
        entry["value"] = isKnown ? SourceValue(source->second) : StateOf(entry["type"], sensor);
        entry["unit"] = isKnown ? source->second.at("unit") : json("");
        entry["decision"] = isKnown && source->second.contains("decision") ? source->second.at("decision") : json();
        return entry;
    }

private:
    json sensor;
    std::map<std::string, json> sources;
};

/// The number of registers of a block, from the list of types of its assembly.
json RegistersOf(json const& assembly, json const& block)
{
    json const& types = assembly.at("supportedBlockTypes");
    auto const found =
        std::find_if(types.begin(), types.end(), [&](json const& type) { return type.at("type") == block.at("type"); });
    return found != types.end() ? found->at("registerCount") : json();
}

json MapOf(json const& service, LiveValues const& values)
{
    json map = json::array();
    json const embedded = service.value("_embedded", json::object());
    for (json const& assembly : embedded.value("zu:registerAssembly", json::array()))
    {
        for (json const& block : assembly.at("blocks"))
        {
            map.push_back(values.Entry(block, "dataSource", RegistersOf(assembly, block)));
            map.back()["assembly"] = assembly.at("id");
        }
    }
    if (embedded.contains("zu:datasources"))
    {
        for (json const& output : embedded.at("zu:datasources").at("map"))
        {
            map.push_back(values.Entry(output, "source", nullptr));
        }
    }
    return map;
}

void PrintMap(Printer& out, json const& map)
{
    std::vector<std::vector<Cell>> rows;
    for (json const& entry : map)
    {
        rows.push_back({Shown(entry, "outputId"), Shown(entry, "registers"), Shown(entry, "type"),
                        Shown(entry, "source"), Shown(entry, "value"), Shown(entry, "unit"), DecisionCell(entry)});
    }
    out.Table({"ADDRESS", "REGISTERS", "TYPE", "SOURCE", "VALUE", "UNIT", "DECISION"}, rows);
}

void ShowMap(Call& call)
{
    Sensor& device = call.Device();
    std::string const wanted = call.Text("TYPE");
    json const services = wanted.empty() ? device.Get("/controls").at("_embedded").at("item")
                                         : json::array({device.Get("/controls/" + Escaped(wanted))});
    LiveValues const values(device);
    json maps = json::object();
    for (json const& service : services)
    {
        if (!wanted.empty() || service.at("enabled").get<bool>())
        {
            maps[wanted.empty() ? service.at("id").get<std::string>() : wanted] = MapOf(service, values);
        }
    }
    if (call.PrintedJson(maps))
    {
        return;
    }
    for (auto const& [type, map] : maps.items())
    {
        call.Out().Line(type, Colour::BOLD);
        PrintMap(call.Out(), map);
    }
    if (maps.empty())
    {
        call.Out().Line("No service is enabled: name one");
    }
}

} // namespace

Command MapCommand()
{
    return {
        "map",
        "show the registers and outputs of services with live values",
        "Values are those of the data sources, in their units. A PLC reads them scaled, as docs/registers.md tells.",
        {{Argument::Kind::OPTIONAL_WORD, "TYPE", "", "the service (all that are enabled)", Argument::Values::TEXT, {}}},
        &ShowMap};
}

} // namespace ZuCtl
