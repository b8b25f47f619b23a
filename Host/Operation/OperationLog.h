#pragma once

#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace ZuHost
{

/// The last operations on the sensor, of REST clients and of protocols. All operations of this class are thread-safe.
class OperationLog final
{
public:
    static constexpr std::size_t MAX_KEPT = 100;

    enum class Result
    {
        RUNNING,
        DONE,
        FAILED
    };

    struct Operation
    {
        uint64 number = 0;    ///< grows from operation to operation
        std::string what;     ///< "job load"
        std::string argument; ///< the name of a job or the id of a scanner; empty without one
        std::string who;      ///< as in `TrailEntry`
        std::string from;
        std::string since{};     ///< the begin, as text in UTC; `Add` makes it
        bool isOfClient = false; ///< a REST client has asked for it, else a protocol
        uint64 beginUsec = 0;    ///< a moment of `wTime_NowUsec`
        uint64 endUsec = 0;      ///< the same; 0 while it runs
        Result result = Result::RUNNING;
        int32 status = 0; ///< of a failure: that of its cause
        std::string text; ///< the reason of a failure
    };

    OperationLog();
    ~OperationLog();

    OperationLog(OperationLog const&) = delete;
    OperationLog& operator=(OperationLog const&) = delete;

    /// Adds an operation and returns its number. The oldest one beyond MAX_KEPT is forgotten.
    uint64 Add(Operation operation);

    /// Removes an operation that was refused.
    void Remove(uint64 number);

    /// Ends the oldest running operation of a REST client and returns it. Operations end in the order of their begins.
    /// Returns nothing if none runs.
    std::optional<Operation> EndOldest(Result result, int32 status, std::string const& text, uint64 nowUsec);

    /// The newest operation first.
    std::vector<Operation> All() const;

    std::optional<Operation> Find(uint64 number) const;

private:
    mutable Zu::Mutex lock; // a leaf
    uint64 lastNumber ZU_GUARDED_BY(lock) = 0;
    std::deque<Operation> operations ZU_GUARDED_BY(lock); // the oldest first
};

} // namespace ZuHost
