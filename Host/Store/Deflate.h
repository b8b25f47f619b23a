#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// The content of a file in an SQLite archive: compressed with a zlib header if that makes it shorter, else unchanged.
namespace ZuHost::Deflate
{

/// `bytes` as an archive stores them.
std::string Pack(std::string_view bytes);

/// Whether `packedSize` bytes can unpack to `size` bytes.
bool CanUnpack(std::size_t packedSize, std::size_t size);

/// Reverses `Pack`; `size` is the length of the result. Returns nothing for bytes that `Pack` cannot have made.
/// Allocates only for bytes that are there, as it unpacks them.
std::optional<std::string> Unpack(std::string_view packed, std::size_t size);

} // namespace ZuHost::Deflate
