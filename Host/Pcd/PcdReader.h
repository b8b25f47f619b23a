#pragma once

#include "Host/Pcd/RangeImage.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace ZuHost
{

/// Reads a PCD file of version 0.7: fields x y z of four-byte floats, ascii or binary, organised in rows. Throws -998 for a
/// file that cannot be read and -984 for one that is anything else, is cut short or is not as long as it says; the text
/// names the file and the reason.
RangeImage ReadPcd(std::filesystem::path const& file);

/// The same for the bytes of a file; `name` stands in the texts. No more memory is taken than the bytes can fill.
RangeImage ParsePcd(std::string_view bytes, std::string const& name);

} // namespace ZuHost
