#include "Host/Live/DataSources.h"

#include "Host/Sensor/FramePublisher.h"
#include "wApi/wTime.h"

#include <algorithm>

namespace ZuHost::DataSources
{

namespace
{

using Json = nlohmann::json;

} // namespace

std::vector<DataSource> OfSensor()
{
    std::vector<DataSource> sources{{FramePublisher::STAMP_SOURCE, "Stamp",
                                     "The time, the encoder position, the inputs and the number of the profile.", "",
                                     std::nullopt}};
    for (std::size_t i = 0; i < MEASUREMENT_COUNT; ++i)
    {
        MeasurementInfo const& info = MEASUREMENTS[i];
        sources.push_back({info.source, info.displayName, info.description, info.unit, i});
    }
    return sources;
}

std::optional<DataSource> Find(List const& list, std::string const& id)
{
    std::vector<DataSource> const sources = list();
    auto const found = std::ranges::find(sources, id, &DataSource::id);
    return found == sources.end() ? std::nullopt : std::optional(*found);
}

Json StampOf(wStamp const& stamp)
{
    return {{"timeUsec", stamp.stampTime}, {"encoder", stamp.stampEncoder}, {"inputs", stamp.stampStatus}};
}

Json ValueOf(double value)
{
    return value == Measurement::MISSING ? Json() : Json(value);
}

double AgeSec(uint64 momentUsec)
{
    constexpr double USEC_A_SECOND = 1e6;
    uint64 const nowUsec = wTime_NowUsec();
    uint64 const ageUsec = nowUsec > momentUsec ? nowUsec - momentUsec : 0;
    return static_cast<double>(ageUsec) / USEC_A_SECOND;
}

Json NewestOf(DataSource const& source, SharedFrame const& frame)
{
    Json newest{{"frame", nullptr}, {"ageSec", nullptr}};
    if (frame != nullptr)
    {
        newest = {{"frame", frame->stamp.stampCounter}, {"ageSec", AgeSec(frame->stamp.stampTime)}};
    }
    if (!source.measurement.has_value())
    {
        newest["stamp"] = frame == nullptr ? Json() : StampOf(frame->stamp);
        return newest;
    }
    Measurement const* const measurement = frame == nullptr ? nullptr : &frame->results.at(*source.measurement);
    newest["value"] = measurement == nullptr ? Json() : ValueOf(measurement->value);
    newest["decision"] = measurement == nullptr ? Json() : Json(measurement->decision);
    return newest;
}

} // namespace ZuHost::DataSources
