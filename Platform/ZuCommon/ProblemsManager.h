#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <map>
#include <string>
#include <vector>

namespace ZuCommon
{

/// The present problems of the system, for display to the user. Any thread may call.
class ZUPLATFORM_API ProblemsManager
{
public:
    static constexpr int32 SEVERITY_WARNING = 0;
    static constexpr int32 SEVERITY_ERROR = 1;

    struct Problem
    {
        int32 severity;
        std::string source; ///< the part of the system that has the problem
        std::string text;
        uint64 sinceUsec; ///< time of `Add`, microseconds since 1970
    };

    /// Identifies one problem. Numbers are not reused: a stale iterator identifies no problem. It may be copied freely.
    struct Iterator
    {
        uint64 number = 0; ///< 0 identifies no problem
    };

    ProblemsManager();
    ~ProblemsManager();

    ProblemsManager(ProblemsManager const&) = delete;
    ProblemsManager& operator=(ProblemsManager const&) = delete;

    /// Adds a problem. `format` is a printf format with positional placeholders ("%1$s"); null gives the empty text.
    Iterator Add(int32 severity, char const* source, char const* format, ...) ZU_PRINTF_FORMAT(4, 5);

    /// Removes a problem. Does nothing if it has been removed already.
    void Remove(Iterator problem);

    /// Returns a copy of the present problems, the oldest first.
    std::vector<Problem> List() const;

    uint64 Count() const;

private:
    mutable Zu::Mutex lock; // a leaf: no other lock is taken under it
    uint64 lastNumber ZU_GUARDED_BY(lock) = 0;
    std::map<uint64, Problem> problems ZU_GUARDED_BY(lock); // by number, which is also the order of age
};

} // namespace ZuCommon
