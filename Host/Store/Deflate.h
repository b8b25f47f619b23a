#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The content of a file in an SQLite archive: deflated with a zlib header when that makes it shorter, else as it is.
namespace ZuHost::Deflate
{

/// `bytes` as an archive keeps them.
std::string Pack(std::string_view bytes);

/// What was packed, `size` bytes long; nothing when it is none of that. Never more than `size` bytes of memory are used.
std::optional<std::string> Unpack(std::string_view packed, std::size_t size);

} // namespace ZuHost::Deflate
