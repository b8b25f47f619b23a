#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <map>
#include <string>
#include <vector>

namespace ZuCommon
{

/// The problems that stand at this moment, for the person at the screen. Any thread may call.
class ZUPLATFORM_API ProblemsManager
{
public:
    static constexpr int32 SEVERITY_WARNING = 0;
    static constexpr int32 SEVERITY_ERROR = 1;

    struct Problem
    {
        int32 severity;
        std::string source; ///< the part of the system that has it
        std::string text;
        uint64 sinceUsec; ///< since when, microseconds since 1970
    };

    /// Names one problem. A number is given once: an iterator that is stale names nothing, and may be copied freely.
    struct Iterator
    {
        uint64 number = 0; ///< 0 names nothing
    };

    ProblemsManager();
    ~ProblemsManager();

    ProblemsManager(ProblemsManager const&) = delete;
    ProblemsManager& operator=(ProblemsManager const&) = delete;

    /// Adds a problem behind those that stand. `format` is a printf format for this one text, placeholders positional
    /// ("%1$s"); null gives the empty text.
    Iterator Add(int32 severity, char const* source, char const* format, ...) ZU_PRINTF_FORMAT(4, 5);

    /// Does nothing when the problem is gone already.
    void Remove(Iterator problem);

    /// A copy of what stands now, the oldest first.
    std::vector<Problem> List() const;

    uint64 Count() const;

private:
    mutable Zu::Mutex lock; // a leaf
    uint64 lastNumber ZU_GUARDED_BY(lock) = 0;
    std::map<uint64, Problem> problems ZU_GUARDED_BY(lock); // by number, and so by age
};

} // namespace ZuCommon
