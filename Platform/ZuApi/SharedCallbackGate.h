#pragma once

#include "wApi/wExport.h"
#include "wApi/wTypes.h"

#include <functional>
#include <memory>
#include <utility>

namespace Zu
{

/// A `CallbackGate` that lets calls run concurrently. For callbacks that wait or take other locks, on threads that must
/// not wait for each other at the gate.
///
/// After `Close`, no callback begins. `Close` waits for callbacks on other threads, not for those on its own thread. It
/// must therefore not be called under a lock that a callback takes, and only one thread at a time may call it from
/// within a callback. A bound callback may be called at any time; after `Close` it does nothing.
class ZUAPI_API SharedCallbackGate
{
public:
    SharedCallbackGate();
    ~SharedCallbackGate(); ///< closes the gate

    SharedCallbackGate(SharedCallbackGate const&) = delete;
    SharedCallbackGate& operator=(SharedCallbackGate const&) = delete;

    /// Returns a function that calls `callback` while the gate is open. An empty function stays empty.
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

    /// One call through the gate, counted from construction to destruction.
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

        /// The number of calls through this gate that are running on the calling thread.
        static uint64 CountOnThisThread(State const& passedState) noexcept;

    private:
        State& state;
        Passage const* const outer; // the enclosing passage on this thread, or null
        bool granted = false;
    };

    std::shared_ptr<State> state;
};

} // namespace Zu
