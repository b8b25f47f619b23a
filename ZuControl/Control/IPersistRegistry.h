#pragma once

#include "ZuCommon/Persistence.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuCommon
{
class IPersistHandler;
}

namespace ZuControl
{

/// Registers the handlers of settings that the host stores. The host implements it, and outlives the module with it.
class ZUCONTROL_API IPersistRegistry
{
public:
    /// From now on the host lets `handler` initialise, load and save its settings, under `name`. Returns the id of the
    /// registration. The module calls this at the end of its construction; an exception ends the construction.
    virtual uint64 Register(ZuCommon::IPersistHandler& handler, std::string const& name) = 0;

    /// Ends a registration. Waits for a running operation of the handler; no operation begins after this. The
    /// module calls this first in its destructor, and logs an exception.
    virtual void Deregister(uint64 id) = 0;

    /// Says that the settings of `handler` in `domain` differ from the saved settings. `reserved` is 0. Called on
    /// any thread, also one of a protocol, and with the update gate held: it must not block. An exception reaches the
    /// caller of the `End...` or of the notification that has changed the settings.
    virtual void MarkModified(ZuCommon::IPersistHandler& handler, ZuCommon::PersistDomain domain, uint64 reserved) = 0;

protected:
    IPersistRegistry() noexcept;
    ~IPersistRegistry(); // not virtual: the first slot is the registration
};

} // namespace ZuControl
