#pragma once

#include "ZuCommon/Problems.h"

#include <string>

namespace SparkplugMqtt
{

/// One problem of the system that comes, changes its text and goes. One thread at a time calls.
class StandingProblem final
{
public:
    /// `usedProblems` outlives the object.
    explicit StandingProblem(ZuCommon::ProblemsManager& usedProblems);
    ~StandingProblem(); ///< the problem goes
    StandingProblem(StandingProblem const&) = delete;
    StandingProblem& operator=(StandingProblem const&) = delete;

    /// Shows `newText`; the empty text means that there is no problem. Does nothing if the text is shown already.
    void Show(std::string const& newText);

private:
    ZuCommon::ProblemsManager& problems;
    ZuCommon::ProblemsManager::Iterator shown;
    std::string text;
};

} // namespace SparkplugMqtt
