#pragma once

#include "wApi/wExport.h"
#include "wApi/wMutex.h"

#include <functional>
#include <memory>

namespace Zu
{

/// Ends the life of callbacks before that of the object they are bound to.
///
/// Each callback that an object hands out goes through its gate; when the object closes the gate, in its destructor at the
/// latest, no callback begins any more and a running one has ended: `Close` waits for a call on another thread, and does
/// not wait for one on its own. Calls of one gate exclude each other and may nest. What is bound here may be called for as
/// long as anybody keeps it: behind a closed gate it does nothing.
class ZUAPI_API CallbackGate
{
public:
    CallbackGate();
    ~CallbackGate(); ///< closes

    CallbackGate(CallbackGate const&) = delete;
    CallbackGate& operator=(CallbackGate const&) = delete;

    /// `callback` behind this gate. An empty function stays empty.
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
        Zu::RecursiveMutex lock; // held during each call
        bool open ZU_GUARDED_BY(lock) = true;
    };

    std::shared_ptr<State> state;
};

} // namespace Zu
