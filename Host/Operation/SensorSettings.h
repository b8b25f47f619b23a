#pragma once

#include "Host/Operation/ControlAuthority.h"
#include "ZuCommon/Persistence.h"
#include "wApi/wMutex.h"
#include "wApi/wTypes.h"

#include <nlohmann/json.hpp>

#include <string>

namespace ZuHost
{

class PersistRegistry;
class Sensor;

/// The settings of the sensor itself: the limits of the measurements, which belong to the job, and the control
/// authority, which belongs to the host. It stores them, and applies them to the sensor and the authority.
///
/// A stored document that is not valid leaves the defaults in force, and the user is told. All operations are
/// thread-safe.
class SensorSettings final : public ZuCommon::IPersistHandler
{
public:
    /// Registers itself. All arguments outlive this.
    SensorSettings(PersistRegistry& usedRegistry, Sensor& usedSensor, ControlAuthority& usedAuthority);
    ~SensorSettings() override;

    SensorSettings(SensorSettings const&) = delete;
    SensorSettings& operator=(SensorSettings const&) = delete;

    /// The values of `LimitsParams`.
    nlohmann::json Limits() const;

    /// Changes the limits that `document` names, and no others. Throws `Zu::Status::BAD_ARGUMENT`, or an exception of
    /// the JSON library for a value of a wrong type; then nothing has changed.
    void ChangeLimits(nlohmann::json const& document);

    /// As `ChangeLimits`, for the values of `AuthorityParams`.
    void ChangeAuthority(nlohmann::json const& document);

    std::string Component() override;
    void InitPersistDomain(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store) override;
    void LoadPersistDomain(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore const& store) override;
    void SavePersistDomain(ZuCommon::PersistDomain domain, ZuCommon::IPersistStore& store) override;

private:
    void Apply(nlohmann::json const& base, nlohmann::json const& changes) ZU_REQUIRES(lock);
    void LoadLimits(ZuCommon::IPersistStore const& store) ZU_REQUIRES(lock);
    void LoadAuthority(ZuCommon::IPersistStore const& store) ZU_REQUIRES(lock);

    PersistRegistry& registry;
    Sensor& sensor;
    ControlAuthority& authority;
    uint64 registration = 0;

    // One change at a time. The leaves of the sensor and of the authority are taken under it.
    mutable Zu::Mutex lock;
    nlohmann::json limits ZU_GUARDED_BY(lock);
    /// The stored authority, if it cannot be read. A save keeps it until a client sets the authority.
    std::string refusedAuthority ZU_GUARDED_BY(lock);
};

} // namespace ZuHost
