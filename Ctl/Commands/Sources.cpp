#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Shown.h"
#include "Ctl/Commands/SourceRow.h"

#include <utility>

namespace ZuCtl
{

namespace
{

using nlohmann::json;

std::string DestinationsOf(json const& source)
{
    std::string text;
    for (json const& destination : source.at("destinations"))
    {
        if (destination.at("enabled").get<bool>())
        {
            text += (text.empty() ? "" : ", ") + Shown(destination, "protocol") + ' ' + Shown(destination, "outputId");
        }
    }
    return text.empty() ? "-" : text;
}

void ShowSources(Call& call)
{
    json const sources = call.Device().Get("/datasources").at("dataSources");
    if (call.PrintedJson(sources))
    {
        return;
    }
    std::vector<std::vector<Cell>> rows;
    for (json const& source : sources)
    {
        std::vector<Cell> row = SourceRow(source);
        row.emplace_back(DestinationsOf(source));
        rows.push_back(std::move(row));
    }
    call.Out().Table({"SOURCE", "VALUE", "UNIT", "DECISION", "GOES TO"}, rows);
}

} // namespace

Command SourcesCommand()
{
    return {"sources", "list the data sources with their newest values and where they go", "", {}, &ShowSources};
}

} // namespace ZuCtl
