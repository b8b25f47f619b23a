#include "ZuControl/ControlProtocol/ProtocolBase.h"

#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Properties/Metric.h"
#include "ZuApi/Properties/Value.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/Problems.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/ControlProtocolOperations.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"
#include "ZuControl/ControlProtocol/IProtocolRegisterAssembly.h"
#include "wApi/wString.h"

#include <utility>

namespace ZuControl::ControlProtocol
{

namespace
{

/// The command with a NUL at the end of its text.
ControlRegisterCommandData Ended(ControlRegisterCommandData command)
{
    command.text[ControlRegisterCommandData::TEXT_SIZE - 1] = '\0';
    return command;
}

} // namespace

ProtocolBase::ProtocolBase(ZuEthernetProtocol protocol, char const* protocolDisplayName,
                           ControlProtocolEnviron const& environ)
    : allocator(environ.allocator),
      protocolId(protocol),
      displayName(protocolDisplayName != nullptr ? protocolDisplayName : ""),
      operations(environ.operations),
      hardwareManager(environ.hardwareManager),
      problems(environ.problems),
      problemsTracker(environ.problems)
{
    if (operations == nullptr || environ.deployment == nullptr)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT);
    }
    opEndHandlerId = operations->AddOpEndEventHandler(protocolId, [this](int status) { OpEndEventHandler(status); });
    try
    {
        scannerOptional = AskScannerOptional(*environ.deployment);
    }
    catch (...) // the destructor will not run: the handler is removed here
    {
        operations->RemoveOpEndEventHandler(protocolId, opEndHandlerId);
        throw;
    }
}

ProtocolBase::~ProtocolBase()
{
    // The removal waits for a handler that is running, so it comes before any member is destroyed.
    ZU_GUARD_DESTRUCTOR([this] { operations->RemoveOpEndEventHandler(protocolId, opEndHandlerId); });
}

char const* ProtocolBase::DisplayName() const
{
    return displayName.c_str();
}

ZuEthernetProtocol ProtocolBase::EthernetProtocolId()
{
    return protocolId;
}

void ProtocolBase::BeginUpdateParams(char const* /*key*/)
{
}

void ProtocolBase::EndUpdateParams()
{
}

Zu::Params::Group& ProtocolBase::Params() const
{
    if (params == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return *params;
}

char const* ProtocolBase::ParamsVersion() const
{
    return paramsVersion;
}

Zu::Event<bool>::CallbackId ProtocolBase::AddParamsInternalUpdateEventHandler(std::function<void(bool)> handler)
{
    return paramsInternalUpdateEvent.Add(std::move(handler));
}

void ProtocolBase::RemoveParamsInternalUpdateEventHandler(Zu::Event<bool>::CallbackId& id)
{
    paramsInternalUpdateEvent.Remove(id);
}

void ProtocolBase::NotifyParamsInternalUpdateEventHandler(bool notify)
{
    paramsInternalUpdateEvent.Fire(notify);
}

Zu::Event<ProtocolStatus>::CallbackId
ProtocolBase::AddProtocolStatusUpdateEventHandler(std::function<void(ProtocolStatus)> handler)
{
    return protocolStatusUpdateEvent.Add(std::move(handler));
}

void ProtocolBase::RemoveProtocolStatusUpdateEventHandler(Zu::Event<ProtocolStatus>::CallbackId& id)
{
    protocolStatusUpdateEvent.Remove(id);
}

void ProtocolBase::NotifyProtocolStatusUpdateEventHandler(ProtocolStatus status)
{
    protocolStatusUpdateEvent.Fire(status);
}

Zu::Event<bool>::CallbackId ProtocolBase::AddOutputsInternalUpdateEventHandler(std::function<void(bool)> handler)
{
    return outputsInternalUpdateEvent.Add(std::move(handler));
}

void ProtocolBase::RemoveOutputsInternalUpdateEventHandler(Zu::Event<bool>::CallbackId& id)
{
    outputsInternalUpdateEvent.Remove(id);
}

void ProtocolBase::NotifyOutputsInternalUpdateEventHandler(bool notify)
{
    outputsInternalUpdateEvent.Fire(notify);
}

void ProtocolBase::OutputsUpdate()
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

bool ProtocolBase::HasProtocolOutput() const
{
    return outputs != nullptr;
}

IProtocolOutput& ProtocolBase::Outputs() const
{
    if (outputs == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return *outputs;
}

bool ProtocolBase::HasOutputsActionTarget() const
{
    return outputsActionTarget != nullptr;
}

IControlActionTarget& ProtocolBase::OutputsActionTarget() const
{
    if (!HasOutputsActionTarget() || outputsActionTarget == nullptr) // a derived class may answer the question itself
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return *outputsActionTarget;
}

void ProtocolBase::ProcessResultSets(void* /*resultSets*/)
{
}

void ProtocolBase::RegisterControlScanResultsHandler(IControlScanResults& results)
{
    // The fan-out may still have the handler of an earlier registration, and lives longer than this object.
    resultHandlerId = results.AddResultHandler(
        resultSubscription.Bind(std::function<void(void*)>([this](void* sets) { ProcessResultSets(sets); })),
        protocolId);
    scanResults.store(&results, std::memory_order_relaxed);
}

void ProtocolBase::DeregisterControlScanResultsHandler(IControlScanResults& results)
{
    results.RemoveResultHandler(resultHandlerId);
    scanResults.store(nullptr, std::memory_order_relaxed);
}

IControlActionTarget* ProtocolBase::ActionTarget()
{
    return nullptr;
}

void ProtocolBase::RegisterAssemblyUpdate(char const* /*id*/)
{
    ZU_THROW(Zu::Status::NOT_SUPPORTED);
}

bool ProtocolBase::HasRegisterAssemblyActionTarget() const
{
    return HasRegisterAssemblyGroup();
}

IControlActionTarget& ProtocolBase::RegisterAssemblyActionTarget(char const* id) const
{
    if (!HasRegisterAssemblyActionTarget() || registerAssemblyGroup == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return registerAssemblyGroup->ActionTarget(id);
}

bool ProtocolBase::HasRegisterAssemblyGroup() const
{
    return registerAssemblyGroup != nullptr && !registerAssemblyGroup->Empty();
}

bool ProtocolBase::HasRegisterAssembly(char const* id) const
{
    return registerAssemblyGroup != nullptr && registerAssemblyGroup->HasRegisterAssembly(id);
}

IProtocolRegisterAssembly& ProtocolBase::RegisterAssembly(char const* id) const
{
    if (registerAssemblyGroup == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return registerAssemblyGroup->RegisterAssembly(id);
}

std::vector<std::string> ProtocolBase::RegisterAssemblyList() const
{
    if (registerAssemblyGroup == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return registerAssemblyGroup->List();
}

void ProtocolBase::ConfigureDefaultRegisterAssembly()
{
}

std::vector<std::string> ProtocolBase::DataSourceList() const
{
    if (registerAssemblyGroup != nullptr) // an empty group has precedence over the outputs, too
    {
        return registerAssemblyGroup->DataSourceList();
    }
    if (HasProtocolOutput())
    {
        return Outputs().DataSourceList();
    }
    return {};
}

void ProtocolBase::OnStartScan()
{
    if (metricsData != nullptr) // an exception would end the round: later instances would miss it
    {
        lastControlDrops.store(ControlDrops(), std::memory_order_relaxed);
    }
}

void ProtocolBase::OnStopScan()
{
}

void ProtocolBase::OnFactoryRestore()
{
}

void ProtocolBase::UpdateConnectedClientCount(uint64 count)
{
    if (IControlScanResults* const results = scanResults.load(std::memory_order_relaxed); results != nullptr)
    {
        results->UpdateClientCount(protocolId, count);
    }
}

ControlRegisterCommandStatus ProtocolBase::CompletedOperationStatus() const
{
    return commandStatus.load(std::memory_order_relaxed);
}

IControlHardwareManager& ProtocolBase::HardwareManager()
{
    if (hardwareManager == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return *hardwareManager;
}

void ProtocolBase::InitPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& /*document*/)
{
}

void ProtocolBase::LoadPersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json const& /*document*/)
{
}

void ProtocolBase::SavePersistDomain(ZuCommon::PersistDomain /*domain*/, nlohmann::json& /*document*/)
{
}

Zu::Properties::Structure const& ProtocolBase::GetMetrics() const
{
    if (metricsData == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return *metricsData;
}

void ProtocolBase::OperationCompleted(int status)
{
    OpEndEventHandler(status);
}

void ProtocolBase::CloseResultHandlerGate() noexcept
{
    resultSubscription.End();
}

void ProtocolBase::Describe(ControlInfo& info)
{
    info.SetTypeName("protocolbase");
}

void ProtocolBase::Init(ProtocolInitParams& initParams)
{
    params = initParams.params;
    outputs = initParams.outputs;
    outputsActionTarget = initParams.outputsActionTarget;
    metricsData = initParams.metricsData;
    registerAssemblyGroup = initParams.registerAssemblyGroup;
}

void ProtocolBase::ProcessReceivedCommonCommands(ControlRegisterCommandData command)
{
    command = Ended(command);
    SetOperationInProgress(true); // until the operation's end arrives
    switch (command.commandId)
    {
    case CommandNone:
        ZU_LOG_INFO("NO COMMAND received. No processing done.");
        EndCommand(CommandStatusDone);
        break;
    case CommandStart:
        ZU_LOG_INFO("Processing START command");
        operations->StartScan(protocolId);
        break;
    case CommandStop:
        ZU_LOG_INFO("Processing STOP command");
        operations->StopScan(protocolId);
        break;
    case CommandAlign:
        ZU_LOG_INFO("Processing ALIGN command");
        operations->Alignment(protocolId, command.text);
        break;
    case CommandClearAlign:
        ZU_LOG_INFO("Processing CLEAR ALIGN command");
        operations->ClearAlignment(protocolId, command.text);
        break;
    case CommandLoadJob:
        ZU_LOG_INFO("Processing LOAD JOB command");
        operations->LoadJob(protocolId, command.text);
        break;
    case CommandSoftwareTrigger:
        ZU_LOG_INFO("Processing SOFTWARE TRIGGER command");
        operations->SoftwareTrigger(protocolId, command.text);
        break;
    default:
        ZU_LOG_ERROR("Command Id %d is an invalid command", int{command.commandId});
        EndCommand(CommandStatusFailed);
        break;
    }
}

bool ProtocolBase::IsDuplicateCommand(ControlRegisterCommandData first, ControlRegisterCommandData second)
{
    if (first.commandId != second.commandId)
    {
        return false;
    }
    switch (first.commandId)
    {
    case CommandAlign:
    case CommandClearAlign:
    case CommandLoadJob:
    case CommandSoftwareTrigger:
        return wStrEquals(Ended(first).text, Ended(second).text);
    default:
        return true;
    }
}

void ProtocolBase::CheckControlDrops()
{
    if (metricsData == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    problemsTracker.Begin();
    uint64 const drops = ControlDrops();
    uint64 const baseline = lastControlDrops.load(std::memory_order_relaxed);
    if (drops > baseline)
    {
        problemsTracker.Register(problems->Add(ZuCommon::ProblemsManager::SEVERITY_WARNING, "ZuControl",
                                               "Control drops detected for %1$s protocol.", DisplayName()));
    }
    problemsTracker.End();
    if (drops < baseline) // never raised here: once drops occurred, each check reports them until the next scan start
    {
        lastControlDrops.store(drops, std::memory_order_relaxed);
    }
}

ControlRegisterCommandStatus ProtocolBase::GetCommandStatus()
{
    if (operationInProgress.load(std::memory_order_acquire))
    {
        return CommandStatusInProgress;
    }
    return commandStatus.load(std::memory_order_relaxed);
}

bool ProtocolBase::OperationInProgress() const
{
    return operationInProgress.load(std::memory_order_acquire);
}

void ProtocolBase::SetOperationInProgress(bool isInProgress)
{
    operationInProgress.store(isInProgress, std::memory_order_release);
}

bool ProtocolBase::ScannerIsOptional() const
{
    return scannerOptional;
}

void ProtocolBase::OpEndEventHandler(int status)
{
    EndCommand(status == Zu::Status::SUCCESS ? CommandStatusDone : CommandStatusFailed);
}

void ProtocolBase::EndCommand(ControlRegisterCommandStatus status)
{
    // In this order: a reader that sees the end of the operation must not read the status of the previous command.
    commandStatus.store(status, std::memory_order_relaxed);
    SetOperationInProgress(false);
}

uint64 ProtocolBase::ControlDrops() const
{
    Zu::Properties::Node const* const node = std::as_const(*metricsData).Find("controlDrops");
    if (auto const* const metric = dynamic_cast<Zu::Properties::Metric const*>(node))
    {
        return metric->Get();
    }
    auto const* const value = dynamic_cast<Zu::Properties::Value<uint64> const*>(node);
    return value != nullptr ? value->Get() : 0;
}

bool ProtocolBase::AskScannerOptional(IDeploymentQuery& deployment)
{
    return deployment.IsTavrinServiceApp() || deployment.IsVirtualBrackle() || deployment.IsPhysicalBrackle();
}

} // namespace ZuControl::ControlProtocol
