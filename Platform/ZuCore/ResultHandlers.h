#pragma once

#include "ZuApi/CallbackGate.h"
#include "ZuApi/Event.h"
#include "wApi/wExport.h"
#include "wApi/wMutex.h"

#include <memory>
#include <vector>

namespace ZuCore
{

/// The handlers of one kind of a hub, in order of addition. Any thread may call.
///
/// No lock of the list is held while a handler runs. A handler that throws is logged, and the others still run.
class ZUPLATFORM_API ResultHandlers final
{
public:
    using Handler = std::function<void(void*)>;
    using CallbackId = Zu::Event<void*>::CallbackId;

    ResultHandlers();
    ~ResultHandlers();

    ResultHandlers(ResultHandlers const&) = delete;
    ResultHandlers& operator=(ResultHandlers const&) = delete;

    /// An empty function is not stored and gives an id that is not valid.
    CallbackId Add(Handler handler);

    /// When this returns the handler does not run and will not: it waits for a call on another thread, and not for one on its
    /// own. A stale id does nothing.
    void Remove(CallbackId const& id);

    void Fire(void* resultSet) const;

    bool Empty() const;

private:
    struct Entry
    {
        CallbackId id;
        Handler call; // the handler behind its gate
        Zu::CallbackGate gate;
    };

    using Entries = std::vector<std::shared_ptr<Entry>>;

    std::shared_ptr<Entries const> Present() const;

    mutable Zu::Mutex lock;                   // a leaf
    Zu::Event<void*> ids ZU_GUARDED_BY(lock); // knows which ids are still good; never fired
    std::shared_ptr<Entries const> entries ZU_GUARDED_BY(lock);
};

} // namespace ZuCore
