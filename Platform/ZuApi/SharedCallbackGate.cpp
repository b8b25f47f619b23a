#include "ZuApi/SharedCallbackGate.h"

#include "wApi/wMutex.h"

namespace Zu
{

struct SharedCallbackGate::State
{
    Zu::Mutex lock; // a leaf: not held during a call
    Zu::CondVar left;
    bool open ZU_GUARDED_BY(lock) = true;
    uint64 running ZU_GUARDED_BY(lock) = 0;
};

namespace
{

/// The innermost `Passage` of the calling thread. Typed `void const*` because `Passage` is private; only `Passage`
/// reads it.
thread_local void const* innermost = nullptr;

} // namespace

SharedCallbackGate::SharedCallbackGate() : state(std::make_shared<State>())
{
}

SharedCallbackGate::~SharedCallbackGate()
{
    Close();
}

void SharedCallbackGate::Close() noexcept
{
    uint64 const own = Passage::CountOnThisThread(*state);
    Zu::MutexLock const guard(state->lock);
    state->open = false;
    state->left.WaitUntil(state->lock, wTIMEOUT_INFINITE,
                          [this, own]() ZU_REQUIRES(state->lock) { return state->running == own; });
}

SharedCallbackGate::Passage::Passage(State& passedState) noexcept
    : state(passedState), outer(static_cast<Passage const*>(innermost))
{
    Zu::MutexLock const guard(state.lock);
    granted = state.open;
    if (granted)
    {
        ++state.running;
        innermost = this;
    }
}

SharedCallbackGate::Passage::~Passage()
{
    if (!granted)
    {
        return;
    }
    innermost = outer;
    Zu::MutexLock const guard(state.lock);
    --state.running;
    state.left.NotifyAll();
}

uint64 SharedCallbackGate::Passage::CountOnThisThread(State const& passedState) noexcept
{
    uint64 count = 0;
    for (auto const* passage = static_cast<Passage const*>(innermost); passage != nullptr; passage = passage->outer)
    {
        count += &passage->state == &passedState ? 1u : 0u;
    }
    return count;
}

} // namespace Zu
