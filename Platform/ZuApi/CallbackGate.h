#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"

#include <functional>
#include <memory>

namespace Zu
{

/// Makes sure that no callback runs after the object that it refers to is gone.
///
/// The object binds every callback that it hands out to its gate and closes the gate, in its destructor at the latest.
/// After `Close`, no callback begins, and callbacks on other threads have ended: `Close` waits for them. It does not
/// wait for a callback on its own thread. Calls through one gate exclude each other and may nest. A bound callback may
/// be called at any time; after `Close` it does nothing.
class ZUAPI_API CallbackGate
{
public:
    CallbackGate();
    ~CallbackGate(); ///< closes the gate

    CallbackGate(CallbackGate const&) = delete;
    CallbackGate& operator=(CallbackGate const&) = delete;

    /// Returns a function that calls `callback` while the gate is open. An empty function stays empty.
    template <typename... Args>
    std::function<void(Args...)> Bind(std::function<void(Args...)> callback) const
    {
        if (!callback)
        {
            return {};
        }
        return [shared = state, inner = std::move(callback)](Args... args) {
            Zu::MutexLock const guard(shared->lock);
            if (shared->open)
            {
                inner(args...);
            }
        };
    }

    void Close() noexcept;

private:
    struct State
    {
        Zu::RecursiveMutex lock; // held during each call; recursive because calls may nest
        bool open ZU_GUARDED_BY(lock) = true;
    };

    std::shared_ptr<State> state;
};

} // namespace Zu
