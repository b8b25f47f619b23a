#include "Host/Pcd/RangeImage.h"

#include "ZuApi/Exception.h"

#include <utility>

namespace ZuHost
{

RangeImage::RangeImage(uint64 rowLength, uint64 rowCount, std::vector<Point> allPoints)
    : width(rowLength), height(rowCount), points(std::move(allPoints))
{
    if (points.empty() || width == 0 || points.size() % width != 0 || points.size() / width != height)
    {
        ZU_THROW(Zu::Status::BAD_ARGUMENT, "A range image of %llu rows of %llu points cannot have %llu points",
                 static_cast<unsigned long long>(height), static_cast<unsigned long long>(width),
                 static_cast<unsigned long long>(points.size()));
    }
}

uint64 RangeImage::Width() const
{
    return width;
}

uint64 RangeImage::Height() const
{
    return height;
}

std::span<RangeImage::Point const> RangeImage::Row(uint64 index) const
{
    if (index >= height)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    return {points.data() + index * width, width};
}

} // namespace ZuHost
