#pragma once

#include "wApi/wTypes.h"

#include <span>
#include <vector>

namespace ZuHost
{

/// A recorded range image: rows of points as the file has them, metres, NaN where the sensor saw nothing.
class RangeImage final
{
public:
    struct Point
    {
        float x;
        float y;
        float z;
    };

    /// `allPoints` holds `rowCount` rows of `rowLength` points; throws -997 for another number of points or none.
    RangeImage(uint64 rowLength, uint64 rowCount, std::vector<Point> allPoints);

    uint64 Width() const;
    uint64 Height() const;

    /// Throws -999 for a row that is not there. Lives as long as the image.
    std::span<Point const> Row(uint64 index) const;

private:
    uint64 width;
    uint64 height;
    std::vector<Point> points;
};

} // namespace ZuHost
