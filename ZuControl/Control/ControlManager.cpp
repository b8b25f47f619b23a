#include "ZuControl/Control/ControlManager.h"

#include "ZuApi/Guard.h"
#include "ZuApi/Logging.h"
#include "ZuControl/Control/ControlInfo.h"
#include "ZuControl/Control/ControlInstance.h"
#include "ZuControl/Control/ControlModuleEnviron.h"
#include "ZuControl/Control/ControlRegistry.h"
#include "ZuControl/Control/IControlFactory.h"
#include "ZuControl/Control/IControlScanResults.h"
#include "ZuControl/ControlProtocol/IProtocol.h"
#include "ZuRest/RequestProcessor.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace ZuControl
{

using ZuCommon::PersistDomain;

namespace
{

/// Refuses every read; used when the host has no request processor.
class NoRequestProcessor final : public ZuRest::RequestProcessor
{
public:
    nlohmann::json Read(std::string const& path, nlohmann::json const& /*request*/,
                        std::string const& /*query*/) override
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "This system has no resource at %s", path.c_str());
    }
};

ZuRest::RequestProcessor& ProcessorOf(ControlModuleEnviron const& environ)
{
    static NoRequestProcessor none; // stateless
    return environ.requestProcessor != nullptr ? *environ.requestProcessor : none;
}

} // namespace

ControlManager::ControlManager(ControlRegistry& usedRegistry, IControlScanResults& usedScanResults,
                               ControlModuleEnviron const& newEnviron)
    : registry(usedRegistry),
      environ(newEnviron),
      scanResults(usedScanResults),
      systemInterface(environ.core, environ.persistManager),
      scanEngineInterface(environ.scanEngines),
      hardwareManager(scanEngineInterface),
      operations(systemInterface, scanEngineInterface),
      dataCache(systemInterface, scanEngineInterface),
      resourceAdaptor(ProcessorOf(environ))
{
    protocolEnviron.operations = &operations;
    protocolEnviron.resourceAdaptor = &resourceAdaptor;
    protocolEnviron.dataCache = &dataCache;
    protocolEnviron.hardwareManager = &hardwareManager;
    protocolEnviron.deployment = environ.deployment;
    protocolEnviron.problems = environ.problems;
    protocolEnviron.protocolOption = environ.protocolOption;
    protocolEnviron.allocator = environ.allocator;
    CreateAll();
    try
    {
        HookUp();
    }
    catch (...)
    {
        Unhook(ZU_FUNCTION_LABEL); // the host must not keep handlers of an object that was never constructed
        throw;
    }
}

ControlManager::~ControlManager()
{
    Unhook(ZU_FUNCTION_LABEL);
}

std::string ControlManager::Component()
{
    return "ControlManager";
}

void ControlManager::InitPersistDomain(PersistDomain domain, ZuCommon::IPersistStore& store)
{
    bool const isJob = domain == PersistDomain::JOB;
    if (isJob)
    {
        OnPersistenceLoad(PersistenceLoadOpState::Begin);
    }
    ForEachInstance(ZU_FUNCTION_LABEL,
                    [&](IControlInstance& instance) { persistControl.Init(instance, domain, store); });
    if (isJob)
    {
        OnPersistenceLoad(PersistenceLoadOpState::End);
    }
}

void ControlManager::LoadPersistDomain(PersistDomain domain, ZuCommon::IPersistStore const& store)
{
    auto const load = [&](IControlInstance& instance) { persistControl.Load(instance, domain, store); };
    if (domain != PersistDomain::JOB)
    {
        ForEachInstance(ZU_FUNCTION_LABEL, load);
        return;
    }
    // Stays set when a handler throws: until a later load has run to its end, the job may be loaded in part only.
    loadInProgress.store(true, std::memory_order_relaxed);
    OnPersistenceLoad(PersistenceLoadOpState::Begin);
    bool const succeeded = ForEachInstance(ZU_FUNCTION_LABEL, load);
    OnPersistenceLoad(PersistenceLoadOpState::End);
    loadInProgress.store(false, std::memory_order_relaxed);
    if (!succeeded)
    {
        SetJobFileModified(); // the job differs from its file
    }
}

void ControlManager::SavePersistDomain(PersistDomain domain, ZuCommon::IPersistStore& store)
{
    ForEachInstance(ZU_FUNCTION_LABEL,
                    [&](IControlInstance& instance) { persistControl.Save(instance, domain, store); });
}

std::vector<std::string> ControlManager::List() const
{
    std::vector<std::string> names;
    names.reserve(instances.size());
    for (auto const& entry : instances)
    {
        names.push_back(entry.first);
    }
    return names;
}

IControlInstance& ControlManager::GetInstance(std::string const& typeName)
{
    auto const position = instances.find(typeName);
    if (position == instances.end())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "Control protocol type not recognized: '%s'.", typeName.c_str());
    }
    return *position->second;
}

IControlManager::CallbackId
ControlManager::AddPersistenceLoadEventHandler(std::function<void(PersistenceLoadOpState)> handler)
{
    return persistenceLoadEvent.Add(std::move(handler));
}

void ControlManager::RemovePersistenceLoadEventHandler(CallbackId id)
{
    persistenceLoadEvent.Remove(id);
}

void ControlManager::FindHardware()
{
    hardwareManager.FindHardware();
}

std::vector<ControlVitals::Fault> ControlManager::Faults() const
{
    std::vector<ControlVitals::Fault> faults;
    for (auto const& [typeName, instance] : instances)
    {
        auto const& own = static_cast<ControlInstance const&>(*instance); // `Create` makes no other
        for (std::string& operation : own.Faults().Operations())
        {
            faults.push_back({typeName, std::move(operation)});
        }
    }
    return faults;
}

ControlProtocolOperations const& ControlManager::Operations() const
{
    return operations;
}

ControlProtocolOperations& ControlManager::Operations()
{
    return operations;
}

std::vector<ControlVitals::FailedStarts> ControlManager::FailedStarts() const
{
    std::vector<ControlVitals::FailedStarts> list;
    list.reserve(instances.size());
    for (auto const& entry : instances)
    {
        list.push_back(static_cast<ControlInstance const&>(*entry.second).FailedStarts()); // `Create` makes no other
    }
    return list;
}

void ControlManager::CreateAll()
{
    ZU_LOG_INFO("Creating all control protocol instances.");
    for (ControlInfo const* const info : registry.List())
    {
        Create(*info);
    }
}

void ControlManager::Create(ControlInfo const& info)
{
    ZU_LOG_INFO("Creating control protocol instance: \"%s\".", info.TypeName());
    try
    {
        if (!IsSupported(info))
        {
            ZU_LOG_INFO("%s: control protocol \"%s\" is not supported in this environment", ZU_FUNCTION_LABEL,
                        info.TypeName());
            return;
        }
        ControlInstanceParams params;
        params.info = &info;
        params.updateGate = environ.updateGate;
        params.scanResults = &scanResults;
        params.problems = environ.problems;
        if (info.factory != nullptr) // a type without a factory fails as with a factory that returns null
        {
            params.protocol = info.Factory().Create(protocolEnviron);
        }
        if (params.protocol == nullptr)
        {
            ZU_THROW(Zu::Status::NOT_FOUND, "Failed to create protocol %s", info.TypeName());
        }
        instances.emplace(info.TypeName(), std::make_unique<ControlInstance>(params));
    }
    catch (...)
    {
        ZU_LOG_CAUGHT("Failed to create control protocol: \"%s\" (%s)", info.TypeName(), Zu::CaughtText().c_str());
        throw;
    }
}

bool ControlManager::IsSupported(ControlInfo const& info) const
{
    IDeploymentQuery& deployment = *environ.deployment;
    if (deployment.IsPhysicalSensor())
    {
        return info.SupportedOnPhysicalSensor();
    }
    if (deployment.IsVirtualSensor())
    {
        return info.SupportedOnVirtualSensor();
    }
    if (deployment.IsTavrinServiceApp())
    {
        return info.SupportedOnTavrinServiceApp();
    }
    if (deployment.IsPhysicalBrackle())
    {
        return info.SupportedOnPhysicalBrackle();
    }
    return !deployment.IsVirtualBrackle() || info.SupportedOnVirtualBrackle();
}

void ControlManager::HookUp()
{
    if (environ.persistRegistry != nullptr)
    {
        persistHandlerId = environ.persistRegistry->Register(*this, "");
        registered = true;
    }
    WatchInstances();
    scanStartStopEvent = environ.scanStartStopEvent;
    if (scanStartStopEvent != nullptr)
    {
        scanStartStopHandlerId =
            scanStartStopEvent->Add([this](bool started) { LiveStartStopScanEventHandler(started); });
    }
    factoryRestoreEvent = environ.factoryRestoreEvent;
    if (factoryRestoreEvent != nullptr)
    {
        factoryRestoreHandlerId = factoryRestoreEvent->Add([this] { FactoryRestoreEventHandler(); });
    }
}

void ControlManager::Unhook(char const* label) noexcept
{
    constexpr char const* TEXT = "Exception thrown in destructor";
    if (registered)
    {
        Zu::GuardStep(__LINE__, __FILE__, label, TEXT,
                      [this] { environ.persistRegistry->Deregister(persistHandlerId); });
    }
    // Both removals wait for a handler that runs on a thread of the host.
    if (scanStartStopEvent != nullptr && scanStartStopHandlerId.second)
    {
        Zu::GuardStep(__LINE__, __FILE__, label, TEXT, [this] { scanStartStopEvent->Remove(scanStartStopHandlerId); });
    }
    if (factoryRestoreEvent != nullptr && factoryRestoreHandlerId.second)
    {
        Zu::GuardStep(__LINE__, __FILE__, label, TEXT,
                      [this] { factoryRestoreEvent->Remove(factoryRestoreHandlerId); });
    }
}

void ControlManager::WatchInstances()
{
    // Never removed: the instances are destroyed before the manager's other members.
    for (auto const& entry : instances)
    {
        auto const onUpdate = [this](std::string const& /*typeName*/, bool notify) {
            if (notify)
            {
                SetJobFileModified();
            }
        };
        entry.second->AddParamsUpdatedEventHandler(onUpdate);
        entry.second->AddOutputsUpdatedEventHandler(onUpdate);
        entry.second->AddRegisterAssemblyUpdatedEventHandler(
            [this](std::string const& /*typeName*/, std::string const& /*id*/) { SetJobFileModified(); });
    }
}

bool ControlManager::ForEachInstance(char const* label, std::function<void(IControlInstance&)> const& step)
{
    bool succeeded = true;
    for (auto const& entry : instances)
    {
        succeeded &= Zu::GuardStep(__LINE__, __FILE__, label, "EXCEPTION THROWN: ", [&] { step(*entry.second); });
    }
    return succeeded;
}

void ControlManager::OnPersistenceLoad(PersistenceLoadOpState state)
{
    persistenceLoadEvent.Fire(state);
}

void ControlManager::SetJobFileModified()
{
    if (!loadInProgress.load(std::memory_order_relaxed) && environ.persistRegistry != nullptr)
    {
        environ.persistRegistry->MarkModified(*this, PersistDomain::JOB, 0);
    }
}

void ControlManager::LiveStartStopScanEventHandler(bool started)
{
    for (auto const& entry : instances)
    {
        if (started)
        {
            entry.second->OnStartScan();
        }
        else
        {
            entry.second->OnStopScan();
        }
    }
}

void ControlManager::FactoryRestoreEventHandler()
{
    for (auto const& entry : instances)
    {
        entry.second->OnFactoryRestore();
    }
}

} // namespace ZuControl
