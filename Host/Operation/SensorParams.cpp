#include "Host/Operation/SensorParams.h"

#include "ZuApi/Exception.h"

#include <algorithm>
#include <cmath>

ZU_INSTANTIATE_ENUM_VALUE(ZuHost::RestAuthority);

namespace ZuHost
{

AuthorityParams::AuthorityParams()
{
    Register("rest", "REST May Run the Sensor", rest);
    rest.AddOption(RestAuthority::ALWAYS, "Always");
    rest.AddOption(RestAuthority::WHEN_IDLE, "While No Protocol Sends Commands");
    rest.AddOption(RestAuthority::NEVER, "Never");
    Register("idleSeconds", "Time Without Commands of Protocols", idleSeconds);
    idleSeconds.SetMinimum(1);
    idleSeconds.EnableMaximum(true).GetMaximum().Set(ControlAuthority::LONGEST_IDLE_SECONDS);
    idleSeconds.EnableUnits(true).GetUnits().Set("s");
    Show({});
}

AuthorityParams::~AuthorityParams()
{
    Deregister("rest"); // before the members, to which the base class refers, are destroyed
    Deregister("idleSeconds");
}

void AuthorityParams::Show(ControlAuthority::Settings const& settings)
{
    rest.Set(settings.rest);
    idleSeconds.Set(settings.idleSeconds);
}

ControlAuthority::Settings AuthorityParams::Settings() const
{
    return {rest.Get(), idleSeconds.Get()};
}

LimitParams::LimitParams()
{
    Register("enabled", "Limits Decide", enabled);
    Register("minimum", "Minimum", minimum);
    Register("maximum", "Maximum", maximum);
}

LimitParams::~LimitParams()
{
    Deregister("enabled"); // before the members, to which the base class refers, are destroyed
    Deregister("minimum");
    Deregister("maximum");
}

void LimitParams::SetUnit(char const* unit)
{
    minimum.EnableUnits(true).GetUnits().Set(unit);
    maximum.EnableUnits(true).GetUnits().Set(unit);
}

LimitsParams::LimitsParams()
{
    for (std::size_t i = 0; i < MEASUREMENT_COUNT; ++i)
    {
        Register(MEASUREMENTS[i].key, MEASUREMENTS[i].displayName, limits[i]);
        if (*MEASUREMENTS[i].unit != '\0')
        {
            limits[i].SetUnit(MEASUREMENTS[i].unit);
        }
    }
}

LimitsParams::~LimitsParams()
{
    for (MeasurementInfo const& info : MEASUREMENTS)
    {
        Deregister(info.key); // before the members, to which the base class refers, are destroyed
    }
}

void LimitsParams::SetDefaults()
{
    for (LimitParams& limit : limits)
    {
        limit.enabled.Set(false);
        limit.minimum.Set(0);
        limit.maximum.Set(0);
    }
}

void LimitsParams::Check() const
{
    for (std::size_t i = 0; i < MEASUREMENT_COUNT; ++i)
    {
        if (!(limits[i].minimum.Get() <= limits[i].maximum.Get())) // also refuses what is no number
        {
            ZU_THROW(Zu::Status::BAD_ARGUMENT, "The minimum of %s is above its maximum.", MEASUREMENTS[i].key);
        }
    }
}

ProfileTool::Limits LimitsParams::Limits() const
{
    ProfileTool::Limits made;
    for (std::size_t i = 0; i < MEASUREMENT_COUNT; ++i)
    {
        if (limits[i].enabled.Get())
        {
            made[i] = {limits[i].minimum.Get(), limits[i].maximum.Get()};
        }
    }
    return made;
}

} // namespace ZuHost
