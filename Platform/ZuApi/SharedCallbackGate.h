#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <utility>

namespace Zu
{

/// A CallbackGate whose calls run side by side: for callbacks that take locks of others, or wait, on threads that must not
/// wait for each other here.
///
/// `Close` lets no call begin any more, waits for those that run on other threads, and does not wait for those on its own
/// thread. So it must not be called under a lock that a callback takes, and from within callbacks by one thread at most.
/// What is bound here may be called for as long as anybody keeps it: behind a closed gate it does nothing.
class ZUAPI_API SharedCallbackGate
{
public:
    SharedCallbackGate();
    ~SharedCallbackGate(); ///< closes

    SharedCallbackGate(SharedCallbackGate const&) = delete;
    SharedCallbackGate& operator=(SharedCallbackGate const&) = delete;

    /// `callback` behind this gate. An empty function stays empty.
    template <typename... Args>
    std::function<void(Args...)> Bind(std::function<void(Args...)> callback) const
    {
        if (!callback)
        {
            return {};
        }
        return [shared = state, inner = std::move(callback)](Args... args) {
            Passage const passage(*shared);
            if (passage.IsGranted())
            {
                inner(args...);
            }
        };
    }

    void Close() noexcept;

private:
    struct State;

    /// One call on its way through, counted from its construction to its destruction.
    class ZUAPI_API Passage
    {
    public:
        explicit Passage(State& passedState) noexcept;
        ~Passage();

        Passage(Passage const&) = delete;
        Passage& operator=(Passage const&) = delete;

        bool IsGranted() const
        {
            return granted;
        }

        /// How many passages of the calling thread lead through this gate.
        static uint64 CountOnThisThread(State const& passedState) noexcept;

    private:
        State& state;
        Passage const* const outer; // the passage of this thread that this one lies in
        bool granted = false;
    };

    std::shared_ptr<State> state;
};

} // namespace Zu
