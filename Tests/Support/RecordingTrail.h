#pragma once

#include "Host/Audit/ITrail.h"
#include "Support/CallLog.h"
#include "wApi/wMutex.h"
#include "wApi/wTime.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace ZuTest
{

/// A trail that keeps its entries in memory, in order. Any thread may call.
class RecordingTrail final : public ZuHost::ITrail
{
public:
    void Note(ZuHost::TrailEntry entry) noexcept override
    {
        {
            Zu::MutexLock const guard(lock);
            entries.push_back(std::move(entry));
        }
        changed.NotifyAll();
    }

    std::vector<ZuHost::TrailEntry> All() const
    {
        Zu::MutexLock const guard(lock);
        return entries;
    }

    /// Each entry as a line "who | from | what | before | after | result".
    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines;
        for (ZuHost::TrailEntry const& entry : All())
        {
            lines.push_back(LineOf(entry));
        }
        return lines;
    }

    static std::string LineOf(ZuHost::TrailEntry const& entry)
    {
        std::string line = entry.who;
        for (std::string const* const part : {&entry.from, &entry.what, &entry.before, &entry.after, &entry.result})
        {
            line.append(" | ").append(*part);
        }
        return line;
    }

    /// Waits until there are so many entries; false when that takes too long.
    bool WaitFor(std::size_t count) const
    {
        auto const bound = std::chrono::duration_cast<std::chrono::microseconds>(CallLog::BOUND);
        Zu::MutexLock const guard(lock);
        return changed.WaitUntil(lock, wTime_AfterUsec(static_cast<uint64>(bound.count())),
                                 [&]() ZU_REQUIRES(lock) { return entries.size() >= count; });
    }

    void Clear()
    {
        Zu::MutexLock const guard(lock);
        entries.clear();
    }

private:
    mutable Zu::Mutex lock;
    mutable Zu::CondVar changed;
    std::vector<ZuHost::TrailEntry> entries ZU_GUARDED_BY(lock);
};

} // namespace ZuTest
