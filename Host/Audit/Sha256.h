#pragma once

#include <string>
#include <string_view>

namespace ZuHost
{

/// The SHA-256 of the bytes in 64 hexadecimal digits. Throws `Zu::Status::FAILURE` if the library cannot compute it.
std::string Sha256Hex(std::string_view bytes);

} // namespace ZuHost
