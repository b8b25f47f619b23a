#include "ZuApi/CallbackGate.h"

#include "wApi/wMutex.h"

namespace Zu
{

CallbackGate::CallbackGate() : state(std::make_shared<State>())
{
}

CallbackGate::~CallbackGate()
{
    Close();
}

void CallbackGate::Close() noexcept
{
    Zu::MutexLock const guard(state->lock);
    state->open = false;
}

} // namespace Zu
