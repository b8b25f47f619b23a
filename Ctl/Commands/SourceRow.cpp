#include "Ctl/Commands/SourceRow.h"

#include "Ctl/Commands/Shown.h"

namespace ZuCtl
{

using nlohmann::json;

std::string SourceValue(json const& source)
{
    if (source.contains("stamp"))
    {
        return source.at("frame").is_null() ? "-" : "profile " + Shown(source, "frame");
    }
    return source.contains("value") ? Rounded(source.at("value")) : "-";
}

Cell DecisionCell(json const& source)
{
    auto const decision = source.find("decision");
    if (decision == source.end() || !decision->is_number())
    {
        return {"-"};
    }
    return *decision == 1 ? Cell("good", Colour::GOOD) : Cell("bad", Colour::BAD);
}

std::vector<Cell> SourceRow(json const& source)
{
    return {Shown(source, "id"), SourceValue(source), Shown(source, "unit"), DecisionCell(source)};
}

} // namespace ZuCtl
