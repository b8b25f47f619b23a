#pragma once

#include "ZuCommon/PersistDomain.h"
#include "wApi/wExport.h"

#include <string>

namespace ZuCommon
{

class IPersistStore;

/// Who has settings that are stored. The host calls these, one at a time.
class ZUPLATFORM_API IPersistHandler
{
public:
    virtual ~IPersistHandler(); // first of the slots that others call through: never move one

    /// Name of the component, for logs and lists.
    virtual std::string Component() = 0;

    /// Back to the defaults of this domain, before anything is loaded.
    virtual void InitPersistDomain(PersistDomain domain, IPersistStore& store) = 0;

    virtual void LoadPersistDomain(PersistDomain domain, IPersistStore const& store) = 0;

    virtual void SavePersistDomain(PersistDomain domain, IPersistStore& store) = 0;
};

} // namespace ZuCommon
