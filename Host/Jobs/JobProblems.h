#pragma once

#include "ZuCommon/ProblemsManager.h"

#include <string>
#include <vector>

namespace ZuHost
{

/// What the user is told when something is wrong with the files of the jobs: a line in the log once, and a problem for as long
/// as it stands. One thread at a time.
class JobProblems final
{
public:
    /// What a problem is about; those of one kind go together.
    enum class Kind
    {
        SETTINGS, ///< reading what belongs to the protocols
        LOAD,     ///< reading a job
        SAVE
    };

    explicit JobProblems(ZuCommon::ProblemsManager& usedManager);
    ~JobProblems(); ///< ends all problems

    JobProblems(JobProblems const&) = delete;
    JobProblems& operator=(JobProblems const&) = delete;

    /// Does nothing while a problem of this kind and text stands.
    void Add(Kind kind, std::string const& text);

    /// Ends those of this kind.
    void Clear(Kind kind);

    /// Whether one of this kind stands.
    bool Has(Kind kind) const;

private:
    struct Problem
    {
        Kind kind;
        std::string text;
        ZuCommon::ProblemsManager::Iterator number;
    };

    ZuCommon::ProblemsManager& manager;
    std::vector<Problem> problems;
};

} // namespace ZuHost
