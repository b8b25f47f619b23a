#pragma once

#include "ZuApi/CallbackGate.h"
#include "ZuApi/Event.h"
#include "wApi/wExport.h"
#include "wApi/wMutex.h"

#include <memory>
#include <vector>

namespace ZuCore
{

/// The handlers of a hub for one kind of delivery, in order of addition. Any thread may call.
///
/// No lock of the list is held while a handler runs. The calls of one handler do not overlap, even if several threads
/// fire. An exception of a handler is logged, and the other handlers still run.
class ZUPLATFORM_API ResultHandlers final
{
public:
    using Handler = std::function<void(void*)>;
    using CallbackId = Zu::Event<void*>::CallbackId;

    ResultHandlers();
    ~ResultHandlers();

    ResultHandlers(ResultHandlers const&) = delete;
    ResultHandlers& operator=(ResultHandlers const&) = delete;

    /// Adds a handler. An empty function is not stored; the returned id is then not valid.
    CallbackId Add(Handler handler);

    /// Removes a handler. It waits for a call on another thread, not for a call on its own thread. After the return the
    /// handler is not called any more. Does nothing for a stale id.
    void Remove(CallbackId const& id);

    void Fire(void* resultSet) const;

    bool Empty() const;

private:
    struct Entry
    {
        CallbackId id;
        Handler call; // the handler, bound to `gate`
        Zu::CallbackGate gate;
    };

    using Entries = std::vector<std::shared_ptr<Entry>>;

    std::shared_ptr<Entries const> Present() const;

    mutable Zu::Mutex lock;                   // taken before the lock of `ids`; no handler runs under it
    Zu::Event<void*> ids ZU_GUARDED_BY(lock); // issues the ids; never fired
    std::shared_ptr<Entries const> entries ZU_GUARDED_BY(lock);
};

} // namespace ZuCore
