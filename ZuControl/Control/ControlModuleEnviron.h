#pragma once

#include "ZuApi/Event.h"
#include "ZuCommon/Persistence.h"
#include "ZuControl/Export.h"
#include "wApi/wTypes.h"

#include <string>

namespace ZuCommon
{
class IPersistHandler;
class PersistManager;
class ProblemsManager;
} // namespace ZuCommon

namespace ZuCore
{
class Core;
class ResultHub;
} // namespace ZuCore

namespace ZuRest
{
class RequestProcessor;
} // namespace ZuRest

namespace ZuScan::Internal
{
class ScanEngineManager;
} // namespace ZuScan::Internal

namespace ZuControl
{

/// Tells on which kind of system the module runs. The host implements it; the answers do not change while the module
/// lives.
///
/// The module asks while it is constructed, on the host's main thread; a protocol may ask at any time on any thread.
/// Queries must not block. An exception ends the construction of the module.
class ZUCONTROL_API IDeploymentQuery
{
public:
    IDeploymentQuery() noexcept;
    virtual ~IDeploymentQuery();

    virtual bool IsPhysicalSensor() = 0;
    virtual bool IsPhysicalBrackle() = 0;
    virtual bool IsVirtualSensor() = 0;
    virtual bool IsVirtualBrackle() = 0;
    virtual bool IsTavrinServiceApp() = 0;
};

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

/// Brackets every configuration update. The host implements it, and outlives the module with it.
///
/// The module calls it on the thread of the update, begin and end on the same thread; brackets of one thread may nest.
/// The module may leave a bracket open when a protocol or a handler of the update's event throws: the host closes it
/// when the request that opened it ends.
class ZUCONTROL_API IUpdateGate
{
public:
    /// Opens a bracket; the module always passes true. May block until another thread's bracket is closed. An exception
    /// refuses the update: nothing has changed, and no end follows.
    virtual void BeginUpdate(bool exclusive) = 0;

    /// Closes the bracket. Must neither block nor throw.
    virtual void EndUpdate() = 0;

protected:
    IUpdateGate() noexcept;
    ~IUpdateGate(); // not virtual: the first slot is the opening
};

/// The objects of the host that the module uses. The module keeps a copy of the record and owns none of the objects:
/// they all outlive the module.
struct ControlModuleEnviron
{
    IDeploymentQuery* deployment = nullptr;                     ///< required
    void* allocator = nullptr;                                  ///< null is the default one
    IPersistRegistry* persistRegistry = nullptr;                ///< null: nothing is stored, no change is reported
    ZuCommon::ProblemsManager* problems = nullptr;              ///< required
    ZuCore::ResultHub* resultHub = nullptr;                     ///< null: results come only by direct calls
    IUpdateGate* updateGate = nullptr;                          ///< required
    ZuScan::Internal::ScanEngineManager* scanEngines = nullptr; ///< null: operations on scanners throw
    Zu::Event<bool>* scanStartStopEvent = nullptr;              ///< true when a live scan starts; may be null
    Zu::Event<>* factoryRestoreEvent = nullptr;                 ///< may be null
    ZuCommon::PersistManager* persistManager = nullptr;         ///< loads jobs; null: operations on jobs throw
    ZuCore::Core* core = nullptr;                               ///< start, stop, restart, restore, run state, metrics
    ZuRest::RequestProcessor* requestProcessor = nullptr;       ///< reads other resources; null: reads throw
    uint32 protocolOption = 0;                                  ///< passed to each protocol unchanged
};

} // namespace ZuControl
