#include "ZuControl/Control/ControlInstance.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "ZuControl/ControlProtocol/ProtocolBase.h"
#include "wApi/wMutex.h"

#include <utility>

namespace ZuControl
{

using ControlProtocol::IProtocol;
using ControlProtocol::IProtocolOutput;
using ControlProtocol::IProtocolRegisterAssembly;

namespace
{

constexpr int32 START_STOP_SEVERITY = 1;
constexpr char const* PROBLEM_SOURCE = "Protocol";

} // namespace

ControlInstance::ControlInstance(ControlInstanceParams& params)
    : info(params.info),
      protocol(params.protocol),
      updateGate(params.updateGate),
      scanResults(params.scanResults),
      problems(params.problems),
      problemsTracker(params.problems)
{
    failedStarts.typeName = info->TypeName();
    metrics.BindProtocol(protocol.get());
    metrics.BindFaults(faults);
    try
    {
        AddProtocolHandlers();
    }
    catch (...)
    {
        RemoveProtocolHandlers(); // the protocol may live on: its plug-in may share it
        throw;
    }
}

ControlInstance::~ControlInstance()
{
    if (ZU_GUARD_DESTRUCTOR([this] { RemoveProtocolHandlers(); }))
    {
        metrics.ClearProtocol();
    }
    paramsSubscription.End(); // waits for running handlers; a failed removal is harmless
    statusSubscription.End();
    outputsSubscription.End();
    ZU_GUARD_DESTRUCTOR([this] { EndResultDelivery(); });
}

ControlInfo const& ControlInstance::Info() const
{
    return *info;
}

char const* ControlInstance::TypeName() const
{
    return info->TypeName();
}

ZuEthernetProtocol ControlInstance::EthernetProtocolId() const
{
    return faults.Call("EthernetProtocolId", &IProtocol::EthernetProtocolId, protocol);
}

void ControlInstance::Enable(bool value)
{
    if (value == enabled.load(std::memory_order_relaxed))
    {
        return;
    }
    if (value)
    {
        try
        {
            StartProtocol();
            faults.Call("RegisterControlScanResultsHandler", &IProtocol::RegisterControlScanResultsHandler, protocol,
                        *scanResults);
        }
        catch (...)
        {
            NoteFailedStart();
            throw;
        }
    }
    else
    {
        if (problemsTracker.Count() == 0) // with a problem on record the handler stays registered
        {
            faults.Call("DeregisterControlScanResultsHandler", &IProtocol::DeregisterControlScanResultsHandler,
                        protocol, *scanResults);
        }
        StopProtocol();
    }
    enabled.store(value, std::memory_order_relaxed);
}

bool ControlInstance::IsEnabled() const
{
    return enabled.load(std::memory_order_relaxed);
}

Zu::Event<std::string, bool>::CallbackId
ControlInstance::AddParamsUpdatedEventHandler(std::function<void(std::string, bool)> handler)
{
    return paramsUpdatedEvent.Add(std::move(handler));
}

void ControlInstance::RemoveParamsUpdatedEventHandler(Zu::Event<std::string, bool>::CallbackId id)
{
    paramsUpdatedEvent.Remove(id);
}

Zu::Event<std::string, bool>::CallbackId
ControlInstance::AddOutputsUpdatedEventHandler(std::function<void(std::string, bool)> handler)
{
    return outputsUpdatedEvent.Add(std::move(handler));
}

void ControlInstance::RemoveOutputsUpdatedEventHandler(Zu::Event<std::string, bool>::CallbackId id)
{
    outputsUpdatedEvent.Remove(id);
}

Zu::Event<std::string, std::string>::CallbackId
ControlInstance::AddRegisterAssemblyUpdatedEventHandler(std::function<void(std::string, std::string)> handler)
{
    return registerAssemblyUpdatedEvent.Add(std::move(handler));
}

void ControlInstance::RemoveRegisterAssemblyUpdatedEventHandler(Zu::Event<std::string, std::string>::CallbackId id)
{
    registerAssemblyUpdatedEvent.Remove(id);
}

Zu::Params::Group& ControlInstance::BeginUpdateParameters()
{
    updateGate->BeginUpdate(true);
    return faults.Call("Params", &IProtocol::Params, protocol);
}

void ControlInstance::EndUpdateParameters()
{
    paramsUpdatedEvent.Fire(TypeName(), true);
    updateGate->EndUpdate(); // a handler that throws leaves the gate open, here and below: the host closes it
}

void ControlInstance::BeginUpdateOutputsMap()
{
    updateGate->BeginUpdate(true);
}

void ControlInstance::EndUpdateOutputsMap()
{
    outputsUpdatedEvent.Fire(TypeName(), true);
    updateGate->EndUpdate();
}

void ControlInstance::BeginUpdateRegisterAssembly()
{
    updateGate->BeginUpdate(true);
}

void ControlInstance::EndUpdateRegisterAssembly(std::string const& id)
{
    registerAssemblyUpdatedEvent.Fire(TypeName(), id);
    updateGate->EndUpdate();
}

ZuCommon::IMetricsKeeper& ControlInstance::MetricsKeeper()
{
    return metrics;
}

ZuCommon::IMetricsSource& ControlInstance::MetricsSource()
{
    return metrics;
}

Zu::Params::Group const& ControlInstance::Params() const
{
    return faults.Call("Params", &IProtocol::Params, protocol);
}

char const* ControlInstance::ParamsVersion() const
{
    return faults.Call("ParamsVersion", &IProtocol::ParamsVersion, protocol);
}

void ControlInstance::ParamsUpdate()
{
    faults.Call("ParamsUpdate", &IProtocol::ParamsUpdate, protocol);
}

bool ControlInstance::HasProtocolOutput() const
{
    return faults.Call("HasProtocolOutput", &IProtocol::HasProtocolOutput, protocol);
}

void ControlInstance::OutputsMapBeginLock()
{
    if (HasProtocolOutput())
    {
        faults.Call("IProtocolOutput::BeginLock", &IProtocolOutput::BeginLock, Output());
    }
}

void ControlInstance::OutputsMapEndLock()
{
    if (HasProtocolOutput())
    {
        faults.Call("IProtocolOutput::EndLock", &IProtocolOutput::EndLock, Output());
    }
}

Zu::Params::Group const& ControlInstance::OutputsMap() const
{
    if (!HasProtocolOutput())
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return faults.Call("IProtocolOutput::OutputMap", &IProtocolOutput::OutputMap, Output());
}

bool ControlInstance::HasOutputsActionTarget() const
{
    return faults.Call("HasOutputsActionTarget", &IProtocol::HasOutputsActionTarget, protocol);
}

IControlActionTarget& ControlInstance::OutputsActionTarget() const
{
    return faults.Call("OutputsActionTarget", &IProtocol::OutputsActionTarget, protocol);
}

void ControlInstance::OutputsUpdate()
{
    faults.Call("OutputsUpdate", &IProtocol::OutputsUpdate, protocol);
    UpdateScanResult();
}

bool ControlInstance::HasRegisterAssemblyActionTarget() const
{
    return faults.Call("HasRegisterAssemblyActionTarget", &IProtocol::HasRegisterAssemblyActionTarget, protocol);
}

IControlActionTarget& ControlInstance::RegisterAssemblyActionTarget(char const* id) const
{
    if (!HasRegisterAssemblyActionTarget())
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return faults.Call("RegisterAssemblyActionTarget", &IProtocol::RegisterAssemblyActionTarget, protocol, id);
}

bool ControlInstance::HasRegisterAssemblyGroup() const
{
    return faults.Call("HasRegisterAssemblyGroup", &IProtocol::HasRegisterAssemblyGroup, protocol);
}

bool ControlInstance::HasRegisterAssembly(char const* id) const
{
    return faults.Call("HasRegisterAssembly", &IProtocol::HasRegisterAssembly, protocol, id);
}

ControlProtocol::IProtocolRegisterAssembly& ControlInstance::RegisterAssembly(char const* id) const
{
    if (!HasRegisterAssemblyGroup())
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return Assembly(id);
}

std::vector<std::string> ControlInstance::RegisterAssemblyList() const
{
    if (!HasRegisterAssemblyGroup())
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return faults.Call("RegisterAssemblyList", &IProtocol::RegisterAssemblyList, protocol);
}

void ControlInstance::RegisterAssemblyBeginLock(char const* id)
{
    if (HasRegisterAssemblyGroup())
    {
        faults.Call("IProtocolRegisterAssembly::BeginLock", &IProtocolRegisterAssembly::BeginLock, Assembly(id));
    }
}

void ControlInstance::RegisterAssemblyEndLock(char const* id)
{
    if (HasRegisterAssemblyGroup())
    {
        faults.Call("IProtocolRegisterAssembly::EndLock", &IProtocolRegisterAssembly::EndLock, Assembly(id));
    }
}

void ControlInstance::RegisterAssemblyUpdate(char const* id)
{
    if (HasRegisterAssemblyGroup())
    {
        faults.Call("RegisterAssemblyUpdate", &IProtocol::RegisterAssemblyUpdate, protocol, id);
        UpdateFanOut();
    }
}

void ControlInstance::ResetInstance(bool keepEnabled, DataToReset data)
{
    bool const all = data == DataToResetAll;
    if (!keepEnabled)
    {
        Enable(defaultEnabled);
    }
    if (all || data == DataToResetParams)
    {
        faults.Call("ResetParams", &IProtocol::ResetParams, protocol);
    }
    if ((all || data == DataToResetOutputs) && HasProtocolOutput())
    {
        faults.Call("IProtocolOutput::Clear", &IProtocolOutput::Clear, Output());
        OutputsUpdate();
    }
    if ((all || data == DataToResetRegisterAssemblies) && HasRegisterAssemblyGroup())
    {
        // The fan-out keeps the sources that it had.
        faults.Call("ConfigureDefaultRegisterAssembly", &IProtocol::ConfigureDefaultRegisterAssembly, protocol);
    }
}

IControlActionTarget* ControlInstance::ActionTarget()
{
    return faults.Call("ActionTarget", &IProtocol::ActionTarget, protocol);
}

void ControlInstance::OnStartScan()
{
    faults.Tell("OnStartScan", &IProtocol::OnStartScan, protocol);
}

void ControlInstance::OnStopScan()
{
    faults.Tell("OnStopScan", &IProtocol::OnStopScan, protocol);
}

void ControlInstance::OnFactoryRestore()
{
    faults.Tell("OnFactoryRestore", &IProtocol::OnFactoryRestore, protocol);
}

ProtocolFaults& ControlInstance::Faults() const
{
    return faults;
}

ProtocolStatus ControlInstance::GetProtocolStatus()
{
    return status.load(std::memory_order_relaxed);
}

void ControlInstance::InitPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document)
{
    faults.Call("InitPersistDomain", &IProtocol::InitPersistDomain, protocol, domain, document);
}

void ControlInstance::LoadPersistDomain(ZuCommon::PersistDomain domain, nlohmann::json const& document)
{
    faults.Call("LoadPersistDomain", &IProtocol::LoadPersistDomain, protocol, domain, document);
}

void ControlInstance::SavePersistDomain(ZuCommon::PersistDomain domain, nlohmann::json& document)
{
    faults.Call("SavePersistDomain", &IProtocol::SavePersistDomain, protocol, domain, document);
}

ControlVitals::FailedStarts ControlInstance::FailedStarts() const
{
    Zu::MutexLock const guard(failedStartsLock);
    return failedStarts;
}

/// To be called from a catch block.
void ControlInstance::NoteFailedStart()
{
    std::string reason = Zu::CaughtReason();
    Zu::MutexLock const guard(failedStartsLock);
    ++failedStarts.count;
    failedStarts.lastReason = std::move(reason);
}

void ControlInstance::StartProtocol()
{
    status.store(ProtocolStatus::Starting, std::memory_order_relaxed);
    try
    {
        problemsTracker.Begin();
        faults.Call("Start", &IProtocol::Start, protocol);
        problemsTracker.End();
    }
    catch (Zu::Exception const& exception)
    {
        status.store(ProtocolStatus::FailedToStart, std::memory_order_relaxed);
        RegisterProblem("%1$s", exception.what());
        problemsTracker.End();
        ZU_THROW_NESTED("%s", exception.what());
    }
}

void ControlInstance::StopProtocol()
{
    status.store(ProtocolStatus::Stopping, std::memory_order_relaxed);
    try
    {
        problemsTracker.Begin();
        faults.Call("Stop", &IProtocol::Stop, protocol);
        problemsTracker.End();
    }
    catch (Zu::Exception const& exception)
    {
        status.store(ProtocolStatus::FailedToStop, std::memory_order_relaxed);
        RegisterProblem("%1$s", exception.what());
        problemsTracker.End();
        ZU_THROW_NESTED("%s", exception.what());
    }
}

void ControlInstance::UpdateScanResult()
{
    if (!HasProtocolOutput())
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    UpdateFanOut();
}

IProtocolOutput& ControlInstance::Output() const
{
    return faults.Call("Outputs", &IProtocol::Outputs, protocol);
}

IProtocolRegisterAssembly& ControlInstance::Assembly(char const* id) const
{
    return faults.Call("RegisterAssembly", &IProtocol::RegisterAssembly, protocol, id);
}

void ControlInstance::UpdateFanOut()
{
    scanResults->UpdateOutputMap(EthernetProtocolId(),
                                 faults.Call("DataSourceList", &IProtocol::DataSourceList, protocol));
}

ControlProtocol::IProtocol* ControlInstance::GetProtocol() const
{
    return protocol.get();
}

void ControlInstance::RegisterProblem(char const* format, char const* text)
{
    problemsTracker.Register(problems->Add(START_STOP_SEVERITY, PROBLEM_SOURCE, format, text));
}

void ControlInstance::AddProtocolHandlers()
{
    paramsHandlerId = protocol->AddParamsInternalUpdateEventHandler(paramsSubscription.Bind(
        std::function<void(bool)>([this](bool notify) { ProtocolParamsInternalUpdateHandler(notify); })));
    statusHandlerId = protocol->AddProtocolStatusUpdateEventHandler(statusSubscription.Bind(
        std::function<void(ProtocolStatus)>([this](ProtocolStatus changed) { ProtocolStatusUpdateHandler(changed); })));
    outputsHandlerId = protocol->AddOutputsInternalUpdateEventHandler(outputsSubscription.Bind(
        std::function<void(bool)>([this](bool notify) { ProtocolOutputsInternalUpdateHandler(notify); })));
}

void ControlInstance::RemoveProtocolHandlers()
{
    protocol->RemoveProtocolStatusUpdateEventHandler(statusHandlerId);
    protocol->RemoveParamsInternalUpdateEventHandler(paramsHandlerId);
    protocol->RemoveOutputsInternalUpdateEventHandler(outputsHandlerId);
}

void ControlInstance::EndResultDelivery()
{
    // The fan-out outlives the protocol and may still hold its handler: `Enable(false)` leaves it there with a problem
    // on record, and the protocol may still be enabled. The destructor of ProtocolBase closes the gate too late: the
    // members of the derived class no longer exist then.
    if (auto* const base = dynamic_cast<ControlProtocol::ProtocolBase*>(GetProtocol()))
    {
        base->CloseResultHandlerGate();
    }
}

void ControlInstance::ProtocolParamsInternalUpdateHandler(bool notify)
{
    paramsUpdatedEvent.Fire(TypeName(), notify);
}

void ControlInstance::ProtocolStatusUpdateHandler(ProtocolStatus newStatus)
{
    status.store(newStatus, std::memory_order_relaxed);
    if (newStatus != ProtocolStatus::FailedToStart && newStatus != ProtocolStatus::FailedToStop)
    {
        return;
    }
    bool const toStart = newStatus == ProtocolStatus::FailedToStart;
    if (!toStart && protocol->EthernetProtocolId() == UNSTOPPABLE_PROTOCOL)
    {
        ZU_LOG_USER_WARNING("%1$s protocol cannot be stopped once started. It will continue to run until the device is "
                            "restarted",
                            protocol->DisplayName());
        return; // no problem: this is the designed behaviour of that protocol
    }
    problemsTracker.Begin();
    RegisterProblem(toStart ? "%1$s service failed to start." : "%1$s service failed to stop.",
                    protocol->DisplayName());
    problemsTracker.End();
}

void ControlInstance::ProtocolOutputsInternalUpdateHandler(bool notify)
{
    outputsUpdatedEvent.Fire(TypeName(), notify);
}

} // namespace ZuControl
