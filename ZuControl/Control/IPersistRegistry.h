#pragma once

#include "ZuCommon/PersistDomain.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuCommon
{
class IPersistHandler;
}

namespace ZuControl
{

/// Where those register who have something to keep. The host implements it.
class ZUCONTROL_API IPersistRegistry
{
public:
    /// From now on `handler` is asked to initialise, load and save, under `name`. Gives the id of the registration.
    virtual uint64 Register(ZuCommon::IPersistHandler& handler, std::string const& name) = 0;

    /// Ends a registration; no operation of the handler begins after this.
    virtual void Deregister(uint64 id) = 0;

    /// What `handler` keeps in `domain` differs from what was saved. `reserved` is 0.
    virtual void MarkModified(ZuCommon::IPersistHandler& handler, ZuCommon::PersistDomain domain, uint64 reserved) = 0;

protected:
    IPersistRegistry() noexcept;
    ~IPersistRegistry(); // not virtual: the first slot is the registration
};

} // namespace ZuControl
