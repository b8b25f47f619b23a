#include "ZuApi/CallbackGate.h"

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
    std::scoped_lock const guard(state->lock);
    state->open = false;
}

} // namespace Zu
