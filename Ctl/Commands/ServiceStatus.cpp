#include "Ctl/Commands/ServiceStatus.h"

#include <array>

namespace ZuCtl
{

namespace
{

constexpr std::array STATE_TEXTS{"running", "stopped", "starting", "stopping", "failed to start", "failed to stop"};
constexpr int FIRST_FAILURE = 4;

} // namespace

std::string ServiceStateText(int status)
{
    bool const isKnown = status >= 0 && static_cast<std::size_t>(status) < STATE_TEXTS.size();
    return isKnown ? STATE_TEXTS[static_cast<std::size_t>(status)] : "state " + std::to_string(status);
}

bool IsFailed(int status) noexcept
{
    return status >= FIRST_FAILURE;
}

} // namespace ZuCtl
