#pragma once

#include "Ctl/Outcome/ExitStatus.h"

#include <stdexcept>
#include <string>

namespace ZuCtl
{

/// Ends a command with an exit status and a sentence for the caller.
class Failure final : public std::runtime_error
{
public:
    /// `newProblem` is the problem document of the sensor as JSON text; empty without one.
    Failure(ExitStatus newStatus, std::string const& text, std::string newProblem = "");

    ExitStatus Status() const noexcept;
    std::string const& Problem() const noexcept;

private:
    ExitStatus status;
    std::string problem;
};

} // namespace ZuCtl
