#pragma once

#include "ZuControl/Control/IControlSystemInterface.h"
#include "ZuControl/Export.h"

namespace Zu::Properties
{
class Structure;
}

namespace ZuCommon
{
class PersistManager;
}

namespace ZuCore
{
class Core;
}

namespace ZuControl
{

/// Forwards operations to the core and to the jobs. Without the object that an operation needs it throws
/// `Zu::Status::WRONG_STATE`.
class ZUCONTROL_API ControlSystemInterface final : public IControlSystemInterface
{
public:
    /// Neither is owned; both outlive the object and take calls from several threads.
    ControlSystemInterface(ZuCore::Core* usedCore, ZuCommon::PersistManager* usedPersistManager);
    ~ControlSystemInterface() override;

    ControlSystemInterface(ControlSystemInterface const&) = delete;
    ControlSystemInterface& operator=(ControlSystemInterface const&) = delete;

    void Start() override;
    void Stop() override;
    void FactoryRestore() override;
    void Restart() override;
    void LoadJob(std::string const& name) override;
    void Stats(SystemStats& stats) override;
    void SetNextIpConfig(wIpConfig const& config) override;

private:
    ZuCore::Core& UsedCore() const;
    ZuCommon::PersistManager& UsedPersistManager() const;
    static void ParseSystemMetrics(Zu::Properties::Structure const& structure, SystemStats& stats);

    ZuCore::Core* const core;
    ZuCommon::PersistManager* const persistManager;
};

} // namespace ZuControl
