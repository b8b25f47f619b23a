#pragma once

#include "ZuCommon/Problems.h"

#include <string>
#include <vector>

namespace ZuHost
{

/// Tells the user about faults of the job files: one log line for each fault, and a problem that stays until `Clear`.
/// One thread at a time.
class JobProblems final
{
public:
    /// The subject of a problem. `Clear` ends all problems of one kind.
    enum class Kind
    {
        SETTINGS, ///< reading the settings that belong to the protocols
        LOAD,     ///< reading a job
        SAVE
    };

    explicit JobProblems(ZuCommon::ProblemsManager& usedManager);
    ~JobProblems(); ///< ends all problems

    JobProblems(JobProblems const&) = delete;
    JobProblems& operator=(JobProblems const&) = delete;

    /// Does nothing if a problem of this kind and text exists already.
    void Add(Kind kind, std::string const& text);

    /// Ends all problems of this kind.
    void Clear(Kind kind);

    /// Whether a problem of this kind exists.
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
