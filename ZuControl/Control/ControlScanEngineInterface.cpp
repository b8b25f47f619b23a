#include "ZuControl/Control/ControlScanEngineInterface.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Logging.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/Control/StateDocuments.h"
#include "ZuScan/ScanEngines.h"
#include "ZuScan/Sensor.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace ZuControl
{

namespace
{

using ZuScan::Internal::ScanEngineInstance;
using ZuScan::Internal::ScanEngineManager;
using ZuScan::Internal::ScannerInstance;

} // namespace

ControlScanEngineInterface::ControlScanEngineInterface(ScanEngineManager* usedScanEngines)
    : scanEngines(usedScanEngines)
{
}

ControlScanEngineInterface::~ControlScanEngineInterface() = default;

void ControlScanEngineInterface::SoftwareTrigger(std::string const& scannerId)
{
    try
    {
        ScannerInstance& instance = GetScannerInstance(Engines(), scannerId);
        ZuScan::IActionTarget& target = GetActionTarget(instance);
        ZU_LOG_INFO("Attempting software trigger for scanner %s", instance.Id().c_str());
        if (!IsActionSupported(&target, "trigger"))
        {
            ZU_THROW(Zu::Status::NOT_OFFERED, "Software trigger operation is not supported by scanner %s",
                     instance.Id().c_str());
        }
        target.InvokeAction("trigger", target.GetActionParams("trigger"));
    }
    catch (...)
    {
        ZU_LOG_CAUGHT("Failed to initiate software trigger operation for scanner %s", scannerId.c_str());
        throw;
    }
}

void ControlScanEngineInterface::Alignment(std::string const& scannerId)
{
    AlignmentCommandHelper(scannerId, "align", "alignment");
}

void ControlScanEngineInterface::ClearAlignment(std::string const& scannerId)
{
    AlignmentCommandHelper(scannerId, "clearAlign", "clear alignment");
}

Zu::Event<ZuScan::AlignCompletionStatus>&
ControlScanEngineInterface::AlignmentCompletedEvent(std::string const& scannerId)
{
    try
    {
        return GetScannerInstance(Engines(), scannerId).Scanner().AlignmentCompletedEvent();
    }
    catch (...)
    {
        ZU_LOG_CAUGHT("Failed to get alignment complete event for scanner %s", scannerId.c_str());
        throw;
    }
}

void ControlScanEngineInterface::ScannerInfo(std::string const& scannerId, ScannerStateInfo& info)
{
    ScannerInstance& instance = GetScannerInstance(Engines(), scannerId);
    ZuScan::IActionTarget& target = GetActionTarget(instance);
    if (!IsActionSupported(&target, "scannerInfo"))
    {
        return;
    }
    auto const result = target.InvokeAction("scannerInfo", target.GetActionParams("scannerInfo"));
    if (result == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_OFFERED, "Scanner %s gave no information", instance.Id().c_str());
    }
    info.id = instance.Id();
    info.alignmentState = MapScannerAlignState(instance.Scanner().GetAlignState());
    ParseScannerInfo(*result, info);
}

ZuScan::ISensor* ControlScanEngineInterface::FindSupportedSensor()
{
    ScanEngineManager& manager = Engines();
    std::vector<std::string> const names = manager.List();
    if (names.empty())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "No scan engines found.");
    }
    for (std::string const& name : names)
    {
        ScanEngineInstance& engine = manager.GetInstance(name);
        if (!IsGoodEngine(engine))
        {
            continue;
        }
        for (std::string const& scannerId : engine.ListScanners())
        {
            // Looked up like every id, on the first engine with a scanner, also when another engine lists it.
            ScannerInstance& scanner = GetScannerInstance(manager, scannerId);
            if (IsGoodScanner(scanner))
            {
                return &scanner.FindSensor(scanner.ListSensors().front());
            }
        }
    }
    ZU_LOG_ERROR("No usable sensors found.");
    return nullptr;
}

ScanEngineManager& ControlScanEngineInterface::Engines() const
{
    if (scanEngines == nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "Scan engine manager reference is uninitialized.");
    }
    return *scanEngines;
}

ScanEngineInstance& ControlScanEngineInterface::GetEngineInstance(ScanEngineManager& manager)
{
    std::vector<std::string> const names = manager.List();
    if (names.empty())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "No scan engines found");
    }
    for (std::string const& name : names)
    {
        ScanEngineInstance& engine = manager.GetInstance(name);
        if (IsGoodEngine(engine))
        {
            return engine;
        }
    }
    ZU_THROW(Zu::Status::NOT_FOUND, "No usable scan engines found");
}

ScannerInstance& ControlScanEngineInterface::GetScannerInstance(ScanEngineManager& manager,
                                                                std::string const& scannerId)
{
    ScanEngineInstance& engine = GetEngineInstance(manager);
    if (!scannerId.empty())
    {
        return engine.FindScanner(scannerId);
    }
    std::vector<std::string> const ids = engine.ListScanners();
    if (ids.empty())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "No scanners found for scan engine <%s>", engine.Id().c_str());
    }
    return engine.FindScanner(ids.front());
}

ZuScan::IActionTarget& ControlScanEngineInterface::GetActionTarget(ScannerInstance& instance)
{
    ZuScan::IActionTarget* const target = instance.Scanner().ActionTarget();
    if (target == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "No actions supported by scanner %s", instance.Id().c_str());
    }
    return *target;
}

ZuScan::ICommandTarget& ControlScanEngineInterface::GetCommandTarget(ScannerInstance& instance)
{
    ZuScan::ICommandTarget* const target = instance.CommandTarget();
    if (target == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "No commands supported by scanner %s", instance.Id().c_str());
    }
    return *target;
}

bool ControlScanEngineInterface::IsGoodEngine(ScanEngineInstance& instance)
{
    return !instance.ListScanners().empty();
}

bool ControlScanEngineInterface::IsGoodScanner(ScannerInstance& instance)
{
    return !instance.ListSensors().empty();
}

bool ControlScanEngineInterface::IsActionSupported(ZuScan::IActionTarget* target, char const* name)
{
    std::vector<ZuScan::ActionInfo> const actions = target->ListActions();
    return std::any_of(actions.begin(), actions.end(),
                       [name](ZuScan::ActionInfo const& action) { return action.Id() == name; });
}

void ControlScanEngineInterface::AlignmentCommandHelper(std::string const& scannerId, char const* actionName,
                                                        char const* label)
{
    try
    {
        ScannerInstance& instance = GetScannerInstance(Engines(), scannerId);
        ZuScan::ICommandTarget& target = GetCommandTarget(instance);
        ZU_LOG_INFO("Attempting %s for scanner %s", label, instance.Id().c_str());
        if (!IsActionSupported(&target, actionName))
        {
            ZU_THROW(Zu::Status::NOT_OFFERED, "No support for %s by scanner %s", label, instance.Id().c_str());
        }
        target.InvokeAction(actionName, target.GetActionParams(actionName));
    }
    catch (...)
    {
        ZU_LOG_CAUGHT("Failed %s for scanner %s", label, scannerId.c_str());
        throw;
    }
}

IControlScanEngineInterface::ControlAlignmentState
ControlScanEngineInterface::MapScannerAlignState(ZuScan::AlignState state)
{
    switch (static_cast<uint32>(state))
    {
    case 0:
        return ALIGNMENT_STATE_0;
    case 1:
        return ALIGNMENT_STATE_1;
    case 2:
        return ALIGNMENT_STATE_2;
    default:
        ZU_LOG_ERROR("The scan align state %u read from scanner is invalid", static_cast<uint32>(state));
        return ALIGNMENT_STATE_0;
    }
}

void ControlScanEngineInterface::ParseScannerInfo(Zu::Params::Group const& group, ScannerStateInfo& info)
{
    ScannerInfoDocument::Read(Zu::Properties::JsonSerializer::Serialize(group), info);
}

} // namespace ZuControl
