#pragma once

#include "ZuApi/Signal.h"

#include <memory>
#include <utility>

namespace Zu
{

/// A signal whose handlers may also be named by ids, for interfaces that hand out ids.
template <typename... Args>
class Event : public Signal<Args...>
{
public:
    using typename Signal<Args...>::Handler;

    /// Identifies one handler without owning it. A stale id, or an id of another event, identifies no handler.
    struct CallbackId
    {
        std::weak_ptr<typename Signal<Args...>::Entry> first; ///< the handler's entry in the list
        bool second = false;                                  ///< false if no handler was added
    };

    /// Appends `handler`. An empty function is not stored; the returned id is then not valid.
    CallbackId Add(Handler handler)
    {
        auto const entry = this->Append(std::move(handler));
        return {entry, entry != nullptr};
    }

    /// Removes a handler, and waits for its calls as the end of a subscription does. Does nothing, and waits for no call,
    /// for an id that is not valid or identifies no handler, such as that of a handler that is removed already.
    void Remove(CallbackId const& id)
    {
        if (auto const entry = id.second ? id.first.lock() : nullptr)
        {
            this->handlers.Remove(*entry);
        }
    }
};

} // namespace Zu
