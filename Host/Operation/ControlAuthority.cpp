#include "Host/Operation/ControlAuthority.h"

#include "ZuApi/Exception.h"

namespace ZuHost
{

ControlAuthority::ControlAuthority() = default;

ControlAuthority::~ControlAuthority() = default;

void ControlAuthority::Set(Settings const& newSettings)
{
    Zu::MutexLock const guard(lock);
    settings = newSettings;
}

ControlAuthority::Settings ControlAuthority::Get() const
{
    Zu::MutexLock const guard(lock);
    return settings;
}

void ControlAuthority::NoteCommand(std::string const& protocol, uint64 usec)
{
    Zu::MutexLock const guard(lock);
    if (usec >= lastUsec)
    {
        lastProtocol = protocol.empty() ? "an unknown protocol" : protocol;
        lastUsec = usec;
    }
}

ControlAuthority::State ControlAuthority::At(uint64 nowUsec) const
{
    Zu::MutexLock const guard(lock);
    State state;
    state.settings = settings;
    state.lastProtocol = lastProtocol;
    state.agoUsec = nowUsec > lastUsec ? nowUsec - lastUsec : 0;
    constexpr uint64 USEC_PER_SECOND = 1'000'000;
    uint64 const idleUsec = USEC_PER_SECOND * settings.idleSeconds;
    if (settings.rest == RestAuthority::WHEN_IDLE && !lastProtocol.empty() && state.agoUsec < idleUsec)
    {
        state.waitUsec = idleUsec - state.agoUsec;
    }
    state.mayCommand = settings.rest != RestAuthority::NEVER && state.waitUsec == 0;
    return state;
}

void ControlAuthority::Check(uint64 nowUsec) const
{
    State const state = At(nowUsec);
    if (state.settings.rest == RestAuthority::NEVER)
    {
        ZU_THROW(Zu::Status::WRONG_STATE, "REST may not run the sensor: only the protocols may.");
    }
    if (!state.mayCommand)
    {
        ZU_THROW(Zu::Status::WRONG_STATE,
                 "REST may not run the sensor now: %s has sent a command less than %u seconds ago.",
                 state.lastProtocol.c_str(), state.settings.idleSeconds);
    }
}

} // namespace ZuHost
