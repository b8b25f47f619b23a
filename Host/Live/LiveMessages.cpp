#include "Host/Live/LiveMessages.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace ZuHost::LiveMessages
{

namespace
{

template <typename Number>
void Append(std::string& bytes, Number number)
{
    for (std::size_t i = 0; i < sizeof(number); ++i)
    {
        bytes.push_back(static_cast<char>(static_cast<uint64>(number) >> (8 * i) & 0xFFU));
    }
}

void AppendFloat(std::string& bytes, double number)
{
    Append(bytes, std::bit_cast<uint32>(static_cast<float>(number)));
}

/// A message may have a megabyte of them: they are copied in one step.
void AppendFloats(std::string& bytes, std::vector<float> const& numbers)
{
    static_assert(std::endian::native == std::endian::little);
    bytes.append(reinterpret_cast<char const*>(numbers.data()), numbers.size() * sizeof(float));
}

/// The numbers of a message's head behind its length.
struct Head
{
    wStamp stamp{};
    std::size_t rows = 0;
    std::size_t columns = 0;
    double first = 0;
    double spacing = 0;
};

/// The head of a message with room for its numbers, each a float.
std::string Begin(Kind kind, Head const& head, std::size_t numbers)
{
    std::size_t const size = HEADER_BYTES + numbers * sizeof(float);
    std::string bytes = kind == Kind::PROFILE ? "ZUPR" : "ZURI";
    bytes.reserve(size);
    Append(bytes, static_cast<uint32>(size));
    Append(bytes, head.stamp.stampCounter);
    Append(bytes, head.stamp.stampTime);
    Append(bytes, head.stamp.stampEncoder);
    Append(bytes, static_cast<uint32>(head.rows));
    Append(bytes, static_cast<uint32>(head.columns));
    AppendFloat(bytes, head.first);
    AppendFloat(bytes, head.spacing);
    return bytes;
}

} // namespace

Profile Reduced(ProfileView profile, std::size_t most)
{
    if (profile.size() <= most)
    {
        return {profile.begin(), profile.end()};
    }
    std::size_t const groups = most / 2;
    Profile reduced;
    reduced.reserve(most);
    for (std::size_t group = 0; group < groups; ++group)
    {
        std::size_t const begin = group * profile.size() / groups;
        std::size_t const end = (group + 1) * profile.size() / groups;
        ProfileView const part = profile.subspan(begin, end - begin);
        auto const [lowest, highest] = std::ranges::minmax_element(part, {}, &ProfilePoint::z);
        reduced.push_back(*std::min(lowest, highest)); // the one that comes first on the line
        if (lowest != highest)
        {
            reduced.push_back(*std::max(lowest, highest));
        }
    }
    return reduced;
}

Columns::Columns(LineRange line, std::size_t newCount)
    : first(line.first), spacing((line.last - line.first) / static_cast<double>(newCount)), count(newCount)
{
    first += spacing / 2;
}

std::vector<float> Columns::Heights(ProfileView profile) const
{
    std::vector<float> heights(count, std::numeric_limits<float>::quiet_NaN());
    double const begin = first - spacing / 2;
    auto const last = static_cast<double>(count - 1);
    for (ProfilePoint const& point : profile)
    {
        double const place = spacing > 0 ? std::clamp(std::floor((point.x - begin) / spacing), 0.0, last) : 0;
        float& height = heights[static_cast<std::size_t>(place)];
        height = std::isnan(height) ? static_cast<float>(point.z) : std::max(height, static_cast<float>(point.z));
    }
    return heights;
}

std::string OfProfile(Frame const& frame, std::size_t mostPoints)
{
    Profile const points = Reduced(*frame.profile, mostPoints);
    std::string bytes = Begin(Kind::PROFILE, {frame.stamp, 1, points.size()}, 2 * points.size());
    for (ProfilePoint const& point : points)
    {
        AppendFloat(bytes, point.x);
    }
    for (ProfilePoint const& point : points)
    {
        AppendFloat(bytes, point.z);
    }
    return bytes;
}

std::string OfRows(std::vector<SharedFrame> const& frames, Columns const& columns)
{
    Head const head{frames.back()->stamp, frames.size(), columns.count, columns.first, columns.spacing};
    std::string bytes = Begin(Kind::ROWS, head, frames.size() * columns.count);
    for (SharedFrame const& frame : frames)
    {
        AppendFloats(bytes, columns.Heights(*frame->profile));
    }
    return bytes;
}

std::string Heartbeat(Kind kind)
{
    return Begin(kind, {}, 0);
}

} // namespace ZuHost::LiveMessages
