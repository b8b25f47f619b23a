#include "Ctl/CommandLine/Call.h"
#include "Ctl/Commands/Commands.h"
#include "Ctl/Commands/Shown.h"

namespace ZuCtl
{

namespace
{

using nlohmann::json;

void ShowProblems(Call& call)
{
    json const problems = call.Device().Get("/problems").at("problems");
    if (call.PrintedJson(problems))
    {
        return;
    }
    if (problems.empty())
    {
        call.Out().Line("There is no problem.", Colour::GOOD);
    }
    for (json const& problem : problems)
    {
        bool const isError = Shown(problem, "severity") == "error";
        call.Out().Line(Shown(problem, "since") + "  " + Shown(problem, "severity") + "  " + Shown(problem, "source") +
                            ": " + Shown(problem, "text"),
                        isError ? Colour::BAD : Colour::WARNING);
    }
}

} // namespace

Command ProblemsCommand()
{
    return {"problems",
            "list the open problems, the oldest first",
            "docs/operations.md names the cause and the remedy of each problem.",
            {},
            &ShowProblems};
}

} // namespace ZuCtl
