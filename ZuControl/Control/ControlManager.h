#pragma once

#include "ZuApi/Event.h"
#include "ZuControl/Control/ControlDataCache.h"
#include "ZuControl/Control/ControlHardwareManager.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/ControlResourceAdaptor.h"
#include "ZuControl/Control/ControlScanEngineInterface.h"
#include "ZuControl/Control/ControlSystemInterface.h"
#include "ZuControl/Control/ControlVitals.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/Export.h"
#include "ZuControl/Persistence/PersistControl.h"
#include "wApi/wTypes.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZuControl
{

class ControlInfo;
class ControlRegistry;
class IControlScanResults;

/// Owns every protocol instance and the services that the protocols share.
///
/// It builds one instance for each type of the catalogue that this system supports, gives every protocol the same
/// environ, loads and saves the protocols' settings for the host, and turns the host's events into calls on each
/// instance, in byte-wise order of the type names. It takes no lock: the set of instances is fixed when the constructor
/// ends.
class ZUCONTROL_API ControlManager final : public IControlManager
{
public:
    /// All arguments, and all objects that `newEnviron` points to, outlive the manager. When the protocol of a type
    /// cannot be made, the type is logged and the exception leaves the constructor.
    ControlManager(ControlRegistry& usedRegistry, IControlScanResults& usedScanResults,
                   ControlModuleEnviron const& newEnviron);
    ~ControlManager() override;

    ControlManager(ControlManager const&) = delete;
    ControlManager& operator=(ControlManager const&) = delete;

    std::string Component() override;
    void InitPersistDomain(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store) override;
    void LoadPersistDomain(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore const& store) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store) override;
    std::vector<std::string> List() const override;
    IControlInstance& GetInstance(std::string const& typeName) override;
    CallbackId AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> handler) override;
    void RemovePersistenceLoadEventHandler(CallbackId id) override;

    ControlProtocolOperations const& Operations() const;
    ControlProtocolOperations& Operations();

    /// The failed starts of all instances, by name. Any thread may call.
    std::vector<ControlVitals::FailedStarts> FailedStarts() const;

    /// The operations of protocols that failed when they were last called. Any thread may call.
    std::vector<ControlVitals::Fault> Faults() const;

    /// Makes the hardware manager of the protocols ask the host's sensor for its inputs and outputs. Call it once the
    /// sensor exists, on the thread that has built the manager and before any protocol is enabled; see
    /// ControlHardwareManager.
    void FindHardware();

private:
    void CreateAll();
    void Create(ControlInfo const& info);
    bool IsSupported(ControlInfo const& info) const;
    void HookUp();
    void Unhook(char const* label) noexcept;
    void WatchInstances();

    bool ForEachInstance(char const* label, std::function<void(IControlInstance&)> const& step);
    void OnPersistenceLoad(PersistenceLoadOpState state);
    void SetJobFileModified();
    void LiveStartStopScanEventHandler(bool started);
    void FactoryRestoreEventHandler();

    ControlRegistry& registry;
    ControlModuleEnviron const environ;
    IControlScanResults& scanResults;

    ControlSystemInterface systemInterface;
    ControlScanEngineInterface scanEngineInterface;
    ControlHardwareManager hardwareManager;
    ControlProtocolOperations operations;
    ControlDataCache dataCache;
    ControlResourceAdaptor resourceAdaptor;
    ControlProtocol::ControlProtocolEnviron protocolEnviron;
    std::map<std::string, std::unique_ptr<IControlInstance>> instances;

    // During a load of the job no change counts as a change of the job. Read on the thread of the load, and on any
    // thread on which a protocol reports a change meanwhile.
    std::atomic<bool> loadInProgress{false};
    PersistControl persistControl;

    bool registered = false;
    uint64 persistHandlerId = 0;
    Zu::Event<PersistenceLoadOpState> persistenceLoadEvent;
    Zu::Event<bool>* scanStartStopEvent = nullptr;
    Zu::Event<>* factoryRestoreEvent = nullptr;
    Zu::Event<bool>::CallbackId scanStartStopHandlerId;
    Zu::Event<>::CallbackId factoryRestoreHandlerId;
};

} // namespace ZuControl
