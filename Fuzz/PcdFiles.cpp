// Input: a point cloud file for replay.
//
// Checks: the file is refused with a reason, or it gives an image that is no larger than its bytes allow and that reads
// back equal after it was written.

#include "Fuzz/Support/Check.h"
#include "Host/Pcd/PcdReader.h"
#include "ZuApi/Exception.h"

#include <cstring>
#include <optional>
#include <string>

namespace
{

using ZuHost::RangeImage;

std::optional<RangeImage> Read(std::string_view bytes)
{
    try
    {
        return ZuHost::ParsePcd(bytes, "recording.pcd");
    }
    catch (Zu::Exception const& exception)
    {
        ZU_FUZZ_CHECK(exception.Status() == Zu::Status::BAD_FORMAT);
        ZU_FUZZ_CHECK(std::strncmp(exception.what(), "recording.pcd: ", 15) == 0);
        ZU_FUZZ_CHECK(std::strlen(exception.what()) < 200);
        return std::nullopt;
    }
}

std::string Written(RangeImage const& image)
{
    std::string const width = std::to_string(image.Width());
    std::string const height = std::to_string(image.Height());
    std::string bytes = "VERSION 0.7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH " + width + "\nHEIGHT " + height +
                        "\nPOINTS " + std::to_string(image.Width() * image.Height()) + "\nDATA binary\n";
    for (uint64 row = 0; row < image.Height(); ++row)
    {
        std::span<RangeImage::Point const> const points = image.Row(row);
        bytes.append(reinterpret_cast<char const*>(points.data()), points.size_bytes());
    }
    return bytes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8 const* data, std::size_t size)
{
    std::optional<RangeImage> const image = Read({reinterpret_cast<char const*>(data), size});
    if (image.has_value())
    {
        ZU_FUZZ_CHECK(image->Width() * image->Height() <= size);
        std::string const written = Written(*image);
        std::optional<RangeImage> const again = Read(written);
        ZU_FUZZ_CHECK(again.has_value());
        ZU_FUZZ_CHECK(Written(*again) == written); // bytes, since a point with a NaN is not equal to itself
    }
    return 0;
}
