#include "Ctl/Outcome/Failure.h"

#include <utility>

namespace ZuCtl
{

Failure::Failure(ExitStatus newStatus, std::string const& text, std::string newProblem)
    : std::runtime_error(text), status(newStatus), problem(std::move(newProblem))
{
}

ExitStatus Failure::Status() const noexcept
{
    return status;
}

std::string const& Failure::Problem() const noexcept
{
    return problem;
}

} // namespace ZuCtl
