#include "Host/Jobs/JobProblems.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"

#include <algorithm>

namespace ZuHost
{

JobProblems::JobProblems(ZuCommon::ProblemsManager& usedManager) : manager(usedManager)
{
}

JobProblems::~JobProblems()
{
    for (Problem const& problem : problems)
    {
        ZU_GUARD_DESTRUCTOR([&] { manager.Remove(problem.number); });
    }
}

void JobProblems::Add(Kind kind, std::string const& text)
{
    auto const isSame = [&](Problem const& one) { return one.kind == kind && one.text == text; };
    if (std::ranges::any_of(problems, isSame))
    {
        return;
    }
    ZU_LOG_USER_ERROR("%1$s", text.c_str());
    auto const number = manager.Add(ZuCommon::ProblemsManager::SEVERITY_ERROR, "jobs", "%1$s", text.c_str());
    problems.push_back({kind, text, number});
}

void JobProblems::Clear(Kind kind)
{
    for (Problem const& problem : problems)
    {
        if (problem.kind == kind)
        {
            manager.Remove(problem.number);
        }
    }
    std::erase_if(problems, [kind](Problem const& problem) { return problem.kind == kind; });
}

bool JobProblems::Has(Kind kind) const
{
    return std::ranges::any_of(problems, [kind](Problem const& problem) { return problem.kind == kind; });
}

} // namespace ZuHost
