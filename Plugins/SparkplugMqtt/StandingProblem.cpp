#include "Plugins/SparkplugMqtt/StandingProblem.h"

namespace SparkplugMqtt
{

StandingProblem::StandingProblem(ZuCommon::ProblemsManager& usedProblems) : problems(usedProblems)
{
}

StandingProblem::~StandingProblem()
{
    problems.Remove(shown);
}

void StandingProblem::Show(std::string const& newText)
{
    if (newText == text)
    {
        return;
    }
    problems.Remove(shown);
    shown = {};
    text = newText;
    if (!text.empty())
    {
        shown = problems.Add(ZuCommon::ProblemsManager::SEVERITY_WARNING, "ZuControl", "%1$s", text.c_str());
    }
}

} // namespace SparkplugMqtt
