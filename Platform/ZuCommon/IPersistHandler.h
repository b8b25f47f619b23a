#pragma once

#include "ZuCommon/PersistDomain.h"
#include "wApi/wExport.h"

#include <string>

namespace ZuCommon
{

class IPersistStore;

/// A component with stored settings. The host calls the operations on the thread of its own operation, one at a time.
/// An exception ends the host's operation: later components are not called.
class ZUPLATFORM_API IPersistHandler
{
public:
    virtual ~IPersistHandler(); // slot order is part of the interface: append only

    /// The name of the component, for logs and lists.
    virtual std::string Component() = 0;

    /// Resets the settings of this domain to their defaults. Comes before the load.
    virtual void InitPersistDomain(PersistDomain domain, IPersistStore& store) = 0;

    virtual void LoadPersistDomain(PersistDomain domain, IPersistStore const& store) = 0;

    virtual void SavePersistDomain(PersistDomain domain, IPersistStore& store) = 0;
};

} // namespace ZuCommon
