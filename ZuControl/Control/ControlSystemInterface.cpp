#include "ZuControl/Control/ControlSystemInterface.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Structure.h"
#include "ZuCommon/Metrics.h"
#include "ZuCommon/Persistence.h"
#include "ZuControl/Control/StateDocuments.h"
#include "ZuCore/Core.h"

#include <nlohmann/json.hpp>

namespace ZuControl
{

ControlSystemInterface::ControlSystemInterface(ZuCore::Core* usedCore, ZuCommon::PersistManager* usedPersistManager)
    : core(usedCore), persistManager(usedPersistManager)
{
}

ControlSystemInterface::~ControlSystemInterface() = default;

void ControlSystemInterface::Start()
{
    UsedCore().Start(true);
}

void ControlSystemInterface::Stop()
{
    UsedCore().Stop(false);
}

void ControlSystemInterface::FactoryRestore()
{
    UsedCore().FactoryRestore();
}

void ControlSystemInterface::Restart()
{
    UsedCore().Restart();
}

void ControlSystemInterface::LoadJob(std::string const& name)
{
    UsedPersistManager().LoadJob(name);
}

void ControlSystemInterface::Stats(SystemStats& stats)
{
    stats.runState = UsedCore().GetRunState();
    stats.loadedJob = UsedPersistManager().LoadedJob();
    ParseSystemMetrics(UsedCore().GetMetricsReporter().LastReport().GetMetrics(), stats);
}

void ControlSystemInterface::SetNextIpConfig(wIpConfig const& config)
{
    UsedCore().SetNextIpConfig(config);
}

ZuCore::Core& ControlSystemInterface::UsedCore() const
{
    if (core == nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "Core reference is uninitialized.");
    }
    return *core;
}

ZuCommon::PersistManager& ControlSystemInterface::UsedPersistManager() const
{
    if (persistManager == nullptr)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "Persist manager reference is uninitialized.");
    }
    return *persistManager;
}

void ControlSystemInterface::ParseSystemMetrics(Zu::Properties::Structure const& structure, SystemStats& stats)
{
    SystemMetricsDocument::Read(Zu::Properties::JsonSerializer::Serialize(structure), stats);
}

} // namespace ZuControl
