#pragma once

#include "wApi/wTypes.h"

#include <span>
#include <vector>

namespace ZuHost
{

/// A recorded range image: rows of points as in the file, in metres; NaN where the sensor saw nothing.
class RangeImage final
{
public:
    struct Point
    {
        float x;
        float y;
        float z;
    };

    /// `allPoints` holds `rowCount` rows of `rowLength` points. Throws `Zu::Status::BAD_ARGUMENT` if the number of
    /// points differs or is 0.
    RangeImage(uint64 rowLength, uint64 rowCount, std::vector<Point> allPoints);

    uint64 Width() const;
    uint64 Height() const;

    /// Throws `Zu::Status::NOT_FOUND` for a row that does not exist. Valid as long as the image.
    std::span<Point const> Row(uint64 index) const;

private:
    uint64 width;
    uint64 height;
    std::vector<Point> points;
};

} // namespace ZuHost
