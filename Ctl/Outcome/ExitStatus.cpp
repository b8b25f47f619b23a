#include "Ctl/Outcome/ExitStatus.h"

namespace ZuCtl
{

namespace
{

constexpr ExitStatusText TEXTS[] = {
    {ExitStatus::FINE, "done"},
    {ExitStatus::REFUSED, "the sensor has refused the request, or an operation has failed"},
    {ExitStatus::USAGE, "the command line is wrong"},
    {ExitStatus::UNREACHABLE, "the sensor cannot be reached, or does not answer in time"},
    {ExitStatus::NOT_AUTHORISED, "the sensor asks for a login or a token, or the role does not suffice"},
    {ExitStatus::NOT_A_SENSOR, "the server is no ZuControl host"},
    {ExitStatus::NOT_TRUSTED, "the certificate of the server is not trusted"},
    {ExitStatus::LOCAL_FILE, "a file of this machine cannot be read, written or trusted; a wrong passphrase"},
    {ExitStatus::UNWELL, "doctor has found a fault"},
    {ExitStatus::BUSY, "the sensor is busy: try again"},
};

} // namespace

std::span<ExitStatusText const> ExitStatuses() noexcept
{
    return TEXTS;
}

} // namespace ZuCtl
