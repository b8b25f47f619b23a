#pragma once

#include "Host/Sensor/FrameHistory.h"
#include "Host/Sensor/ProfileSource.h"
#include "wApi/wTypes.h"

#include <cstddef>
#include <string>
#include <vector>

/// Profiles and range images as clients see them: reduced to what they have asked for, and as binary messages. All
/// numbers of a message are little endian.
namespace ZuHost::LiveMessages
{

inline constexpr std::size_t HEADER_BYTES = 48;

enum class Kind
{
    PROFILE, ///< "ZUPR"
    ROWS     ///< "ZURI"
};

/// At most `most` points of a profile, in their order: of each stretch of the line the lowest and the highest one.
/// `most` is at least 2.
Profile Reduced(ProfileView profile, std::size_t most);

/// The columns of a range image: `count` cells of one width that cover the line.
struct Columns
{
    Columns(LineRange line, std::size_t newCount);

    /// The highest point of the profile in each column; NaN where there is none.
    std::vector<float> Heights(ProfileView profile) const;

    double first;   ///< the middle of the first column
    double spacing; ///< 0 for a line without width
    std::size_t count;
};

/// A message with the profile of a frame.
std::string OfProfile(Frame const& frame, std::size_t mostPoints);

/// A message with the rows of frames, of which there is at least one.
std::string OfRows(std::vector<SharedFrame> const& frames, Columns const& columns);

/// A message without rows.
std::string Heartbeat(Kind kind);

} // namespace ZuHost::LiveMessages
