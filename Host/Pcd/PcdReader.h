#pragma once

#include "Host/Pcd/RangeImage.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace ZuHost
{

/// Reads a PCD file of version 0.7 with the fields x y z as four-byte floats, ascii or binary, organised in rows.
/// Throws `Zu::Status::NOT_OFFERED` for a file that cannot be read, and `Zu::Status::BAD_FORMAT` for a file of another
/// format or of the wrong length. The text names the file and the reason.
RangeImage ReadPcd(std::filesystem::path const& file);

/// Parses the bytes of a file; `name` stands in the error texts. Allocates no more than the bytes can fill.
RangeImage ParsePcd(std::string_view bytes, std::string const& name);

} // namespace ZuHost
