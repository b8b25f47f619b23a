#pragma once

#include "ZuControl/Export.h"
#include "wApi/wMutex.h"

#include <atomic>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace ZuControl
{

/// The operations of one protocol that failed when they were last called.
///
/// The instance, the resources and the metrics reads call a protocol through this class. Calls that bypass it: the
/// updates and resets of the metrics, the result batches, and the handlers between protocol and instance. An operation
/// counts as failed until it succeeds. Any thread may call. Operations are named by string literals.
class ZUCONTROL_INTERNAL_API ProtocolFaults final
{
public:
    ProtocolFaults();
    ~ProtocolFaults();

    ProtocolFaults(ProtocolFaults const&) = delete;
    ProtocolFaults& operator=(ProtocolFaults const&) = delete;

    /// Invokes `step` with `arguments`, returns its result and passes on its exceptions. A Zu::Exception and an
    /// exception of the JSON library are refusals for the caller; any other exception is a fault of `operation`.
    template <typename Step, typename... Arguments>
    decltype(auto) Call(char const* operation, Step&& step, Arguments&&... arguments)
    {
        return Run(operation, true, std::forward<Step>(step), std::forward<Arguments>(arguments)...);
    }

    /// As `Call`, for an operation that only notifies the protocol and so cannot refuse: any exception is a fault.
    template <typename Step, typename... Arguments>
    void Tell(char const* operation, Step&& step, Arguments&&... arguments)
    {
        Run(operation, false, std::forward<Step>(step), std::forward<Arguments>(arguments)...);
    }

    /// The failed operations by name.
    std::vector<std::string> Operations() const;

private:
    template <typename Step, typename... Arguments>
    decltype(auto) Run(char const* operation, bool mayRefuse, Step&& step, Arguments&&... arguments)
    {
        try
        {
            if constexpr (std::is_void_v<std::invoke_result_t<Step, Arguments...>>)
            {
                std::invoke(std::forward<Step>(step), std::forward<Arguments>(arguments)...);
                NoteSuccess(operation);
            }
            else
            {
                decltype(auto) result = std::invoke(std::forward<Step>(step), std::forward<Arguments>(arguments)...);
                NoteSuccess(operation);
                return result;
            }
        }
        catch (...)
        {
            NoteCaught(operation, mayRefuse);
            throw;
        }
    }

    void NoteSuccess(char const* operation)
    {
        if (hasFaults.load(std::memory_order_relaxed))
        {
            Forget(operation);
        }
    }

    void NoteCaught(char const* operation, bool mayRefuse) noexcept;
    void Forget(char const* operation);

    std::atomic<bool> hasFaults{false}; // avoids the lock while there are no faults; publishes nothing
    mutable Zu::Mutex lock;             // a leaf
    std::set<std::string_view> failed ZU_GUARDED_BY(lock);
};

} // namespace ZuControl
