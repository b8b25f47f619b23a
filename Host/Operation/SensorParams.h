#pragma once

#include "Host/Operation/ControlAuthority.h"
#include "Host/Sensor/Measurements.h"
#include "ZuApi/Params/Enum.h"
#include "ZuApi/Params/Group.h"
#include "ZuApi/Params/Value.h"

#include <array>

namespace ZuHost
{

/// The document of the control authority. One thread at a time.
class AuthorityParams final : public Zu::Params::Group
{
public:
    AuthorityParams();
    ~AuthorityParams() override;

    AuthorityParams(AuthorityParams const&) = delete;
    AuthorityParams& operator=(AuthorityParams const&) = delete;

    void Show(ControlAuthority::Settings const& settings);
    ControlAuthority::Settings Settings() const;

private:
    Zu::Params::Enum<RestAuthority> rest;
    Zu::Params::Value<uint32> idleSeconds;
};

/// The limits of one measurement.
class LimitParams final : public Zu::Params::Group
{
public:
    LimitParams();
    ~LimitParams() override;

    LimitParams(LimitParams const&) = delete;
    LimitParams& operator=(LimitParams const&) = delete;

    void SetUnit(char const* unit);

    Zu::Params::Value<bool> enabled; ///< without it, each value is good
    Zu::Params::Value<double> minimum;
    Zu::Params::Value<double> maximum;
};

/// The document of the limits of all measurements. One thread at a time.
class LimitsParams final : public Zu::Params::Group
{
public:
    LimitsParams();
    ~LimitsParams() override;

    LimitsParams(LimitsParams const&) = delete;
    LimitsParams& operator=(LimitsParams const&) = delete;

    /// Disables all limits.
    void SetDefaults();

    /// Throws `Zu::Status::BAD_ARGUMENT` with a sentence if a minimum is above its maximum.
    void Check() const;

    ProfileTool::Limits Limits() const;

private:
    std::array<LimitParams, MEASUREMENT_COUNT> limits;
};

} // namespace ZuHost

ZU_DECLARE_ENUM_VALUE(ZuHost::RestAuthority);
