#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/PrometheusText.h"

namespace ZuCtl
{

namespace
{

void ShowMetrics(Call& call)
{
    std::string const beginning = call.Text("BEGINNING");
    std::vector<Series> const metrics = ReadPrometheusText(call.Device().GetText("/metrics").body, beginning);
    nlohmann::json document = nlohmann::json::array();
    for (Series const& series : metrics)
    {
        document.push_back({{"name", series.name}, {"labels", series.labels}, {"value", series.value}});
    }
    if (call.PrintedJson(document))
    {
        return;
    }
    std::vector<std::vector<Cell>> rows;
    for (Series const& series : metrics)
    {
        rows.push_back({series.name, series.labels, series.value});
    }
    call.Out().Table({"METRIC", "LABELS", "VALUE"}, rows);
}

} // namespace

Command MetricsCommand()
{
    return {"metrics",
            "show all counters",
            "docs/metrics.md explains each of them.",
            {{Argument::Kind::OPTIONAL_WORD,
              "BEGINNING",
              "",
              "only metrics whose names begin so",
              Argument::Values::TEXT,
              {}}},
            &ShowMetrics};
}

} // namespace ZuCtl
