#pragma once

#include "ZuApi/Event.h"
#include "ZuCommon/Persistence.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <functional>
#include <string>
#include <vector>

namespace ZuControl
{

class IControlInstance;

/// The instances of all protocol types that this system supports. The set of instances never changes.
///
/// Threads: any; no operation of this interface blocks. The host calls the
/// operations of ZuCommon::IPersistHandler one at a time; they block for as long as the protocols do. An exception of a
/// protocol during them is logged and not passed on, and the other protocols follow.
class ZUCONTROL_API IControlManager : public ZuCommon::IPersistHandler
{
public:
    enum class PersistenceLoadOpState : uint8
    {
        Begin = 0, ///< the job is about to be loaded or set to its defaults
        End = 1    ///< it has been
    };

    using CallbackId = Zu::Event<PersistenceLoadOpState>::CallbackId;

    IControlManager() noexcept;

    // Behind the slots of ZuCommon::IPersistHandler; plug-ins and the host call through them: never move one.
    ~IControlManager() override;

    /// The type names of all instances, in byte-wise order.
    virtual std::vector<std::string> List() const = 0;

    /// The instance of a type, which lives as long as the manager. Throws `Zu::Status::NOT_FOUND` for an unknown or
    /// unsupported type.
    virtual IControlInstance& GetInstance(std::string const& typeName) = 0;

    /// Adds a handler that runs on the thread that loads the job or sets it to its defaults, before and after that. An
    /// exception of a handler ends the operation at once and reaches the host. After a load that has ended so, no
    /// change counts as a change of the job until a later load has run to its end.
    virtual CallbackId AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> handler) = 0;

    /// Does not wait for a call that has begun.
    virtual void RemovePersistenceLoadEventHandler(CallbackId id) = 0;
};

} // namespace ZuControl
