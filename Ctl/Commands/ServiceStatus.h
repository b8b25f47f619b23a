#pragma once

#include <string>

namespace ZuCtl
{

/// The text of the member `status` of a service.
std::string ServiceStateText(int status);

/// Whether the service should run or stop, and cannot.
bool IsFailed(int status) noexcept;

} // namespace ZuCtl
