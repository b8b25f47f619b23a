#include "Host/Live/LiveResources.h"

#include "Host/Live/QueryNumbers.h"
#include "Host/Live/SourceDestinations.h"
#include "Host/Sensor/Sensor.h"
#include "ZuApi/Exception.h"
#include "ZuRest/Answer.h"
#include "ZuRest/JsonText.h"
#include "ZuRest/Path.h"
#include "ZuRest/Request.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResourceRouter.h"
#include "ZuRest/ResponseInfo.h"

#include <cmath>
#include <utility>

namespace ZuHost
{

namespace HttpStatus = ZuRest::HttpStatus;
using Json = nlohmann::json;
using LiveMessages::Columns;
using Message = LiveFeed::Message;
using ZuRest::Answer;

namespace
{

constexpr char const* SOURCES_ROUTE = "/datasources/:source";
constexpr char const* EVENT_STREAM = "text/event-stream";
constexpr char const* BYTE_STREAM = "application/octet-stream";
constexpr double MIN_RATE_HZ = 0.1;
constexpr double USUAL_SOURCE_RATE_HZ = 10;
constexpr uint64 USUAL_POINTS = 512;
constexpr uint64 USUAL_ROWS = 100;
constexpr uint64 USUAL_COLUMNS = 120;

bool Accepts(ZuRest::Request const& request, char const* type)
{
    return request.accept.find(type) != std::string::npos;
}

/// The answer that opens a stream; for HEAD its head alone.
Answer AnswerOf(ZuRest::Request const& request, char const* type, LiveFeed& feed, LiveFeed::View view)
{
    Answer answer{HttpStatus::OK, type, "", {{"Cache-Control", "no-store"}}};
    if (request.method != "HEAD")
    {
        answer.openBody = feed.Admit(std::move(view));
    }
    return answer;
}

/// What a client wants to see of a range image.
struct GridOrder
{
    explicit GridOrder(QueryNumbers& query)
        : rows(query.TakeCount("rows", 1, FrameHistory::MAX_FRAMES, USUAL_ROWS)),
          columns(query.TakeCount("columns", 2, RangeImageResource::MAX_COLUMNS, USUAL_COLUMNS))
    {
    }

    std::size_t rows;
    std::size_t columns;
};

uint64 PointsIn(QueryNumbers& query)
{
    return query.TakeCount("points", 2, ProfileResource::MAX_POINTS, USUAL_POINTS);
}

Json RowOf(std::vector<float> const& heights)
{
    Json row = Json::array();
    for (float const height : heights)
    {
        row.push_back(std::isnan(height) ? Json() : Json(height));
    }
    return row;
}

} // namespace

DataSourcesResource::DataSourcesResource(FrameHistory const& shownFrames, LiveFeed& usedFeed, DataSources::List newList,
                                         SourceDestinations const& usedDestinations)
    : frames(shownFrames), feed(usedFeed), list(std::move(newList)), destinations(usedDestinations)
{
}

DataSourcesResource::~DataSourcesResource() = default;

Json DataSourcesResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response)
{
    SourceDestinations::Found found = destinations.Collect();
    if (std::string const* const id = request.FindKey("source"); id != nullptr)
    {
        return DocumentOf(Require(*id), std::move(found[*id]));
    }
    Json sources = Json::array();
    for (DataSource const& source : list())
    {
        sources.push_back(DocumentOf(source, std::move(found[source.id])));
        response.Link("zu:source", ZuRest::Path::Format(SOURCES_ROUTE, {source.id}), true, {{"title", source.id}});
    }
    return {{"dataSources", std::move(sources)}};
}

bool DataSourcesResource::WantsFeed(ZuRest::Request const& request) const
{
    return Accepts(request, EVENT_STREAM);
}

Answer DataSourcesResource::AnswerFeed(ZuRest::Request const& request, ZuRest::RequestInfo const& info)
{
    std::string const* const id = info.FindKey("source");
    if (id == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_SUPPORTED, "The list of data sources is no stream; each data source is.");
    }
    Require(*id);
    QueryNumbers query(request.query);
    LiveFeed::View view;
    view.rateHz = query.Take("rate", MIN_RATE_HZ, MAX_RATE_HZ, USUAL_SOURCE_RATE_HZ);
    query.CheckAllTaken();
    view.heartbeat = ": still here\n\n";
    view.next = [this, id = *id, seen = uint64{0}]() mutable -> Message {
        auto const source = DataSources::Find(list, id);
        if (!source.has_value())
        {
            Json const sentence{{"text", "The data source '" + id + "' is no longer there."}};
            return {"event: end\ndata: " + ZuRest::JsonText::Write(sentence) + "\n\n", true};
        }
        SharedFrame const frame = frames.Newest();
        if (frame == nullptr || std::exchange(seen, frame->sequence) == frame->sequence)
        {
            return {};
        }
        return {"id: " + std::to_string(frame->stamp.stampCounter) +
                "\ndata: " + ZuRest::JsonText::Write(DataSources::NewestOf(*source, frame)) + "\n\n"};
    };
    return AnswerOf(request, EVENT_STREAM, feed, std::move(view));
}

Json DataSourcesResource::DocumentOf(DataSource const& source, Json places) const
{
    Json document = DataSources::NewestOf(source, frames.Newest());
    document["id"] = source.id;
    document["displayName"] = source.displayName;
    document["description"] = source.description;
    document["type"] = source.measurement.has_value() ? "Measurement" : "Stamp";
    document["unit"] = source.unit;
    document["destinations"] = places.is_null() ? Json::array() : std::move(places);
    return document;
}

DataSource DataSourcesResource::Require(std::string const& id) const
{
    auto const source = DataSources::Find(list, id);
    if (!source.has_value())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no data source '%s'.", id.c_str());
    }
    return *source;
}

ProfileResource::ProfileResource(FrameHistory const& shownFrames, LiveFeed& usedFeed)
    : frames(shownFrames), feed(usedFeed)
{
}

ProfileResource::~ProfileResource() = default;

Json ProfileResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    QueryNumbers query(request.query);
    uint64 const points = PointsIn(query);
    query.CheckAllTaken();
    SharedFrame const frame = frames.Newest();
    Json x = Json::array();
    Json z = Json::array();
    if (frame == nullptr)
    {
        return {{"frame", nullptr}, {"stamp", nullptr}, {"ageSec", nullptr}, {"x", x}, {"z", z}};
    }
    for (ProfilePoint const& point : LiveMessages::Reduced(*frame->profile, points))
    {
        x.push_back(point.x);
        z.push_back(point.z);
    }
    return {{"frame", frame->stamp.stampCounter},
            {"stamp", DataSources::StampOf(frame->stamp)},
            {"ageSec", DataSources::AgeSec(frame->stamp.stampTime)},
            {"x", std::move(x)},
            {"z", std::move(z)}};
}

bool ProfileResource::WantsFeed(ZuRest::Request const& request) const
{
    return Accepts(request, BYTE_STREAM);
}

Answer ProfileResource::AnswerFeed(ZuRest::Request const& request, ZuRest::RequestInfo const& /*info*/)
{
    QueryNumbers query(request.query);
    uint64 const points = PointsIn(query);
    LiveFeed::View view;
    view.rateHz = query.Take("rate", MIN_RATE_HZ, MAX_RATE_HZ, MAX_RATE_HZ);
    query.CheckAllTaken();
    view.heartbeat = LiveMessages::Heartbeat(LiveMessages::Kind::PROFILE);
    view.next = [this, points, seen = uint64{0}]() mutable -> Message {
        SharedFrame const frame = frames.Newest();
        if (frame == nullptr || std::exchange(seen, frame->sequence) == frame->sequence)
        {
            return {};
        }
        return {LiveMessages::OfProfile(*frame, points)};
    };
    return AnswerOf(request, BYTE_STREAM, feed, std::move(view));
}

RangeImageResource::RangeImageResource(Sensor const& shownSensor, LiveFeed& usedFeed)
    : sensor(shownSensor), feed(usedFeed)
{
}

RangeImageResource::~RangeImageResource() = default;

Json RangeImageResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& /*response*/)
{
    QueryNumbers query(request.query);
    GridOrder const order(query);
    query.CheckAllTaken();
    Columns const columns(sensor.Line(), order.columns);
    Json numbers = Json::array();
    Json rows = Json::array();
    for (SharedFrame const& frame : sensor.Frames().After(0, order.rows))
    {
        numbers.push_back(frame->stamp.stampCounter);
        rows.push_back(RowOf(columns.Heights(*frame->profile)));
    }
    return {{"rows", rows.size()},        {"columns", columns.count},     {"x0", columns.first},
            {"spacing", columns.spacing}, {"frames", std::move(numbers)}, {"z", std::move(rows)}};
}

bool RangeImageResource::WantsFeed(ZuRest::Request const& request) const
{
    return Accepts(request, BYTE_STREAM);
}

Answer RangeImageResource::AnswerFeed(ZuRest::Request const& request, ZuRest::RequestInfo const& /*info*/)
{
    QueryNumbers query(request.query);
    GridOrder const order(query);
    LiveFeed::View view;
    view.rateHz = query.Take("rate", MIN_RATE_HZ, ProfileResource::MAX_RATE_HZ, ProfileResource::MAX_RATE_HZ);
    query.CheckAllTaken();
    view.heartbeat = LiveMessages::Heartbeat(LiveMessages::Kind::ROWS);
    view.next = [this, order, columns = Columns(sensor.Line(), order.columns), seen = uint64{0}]() mutable -> Message {
        std::vector<SharedFrame> const fresh = sensor.Frames().After(seen, order.rows);
        if (fresh.empty())
        {
            return {};
        }
        seen = fresh.back()->sequence;
        return {LiveMessages::OfRows(fresh, columns)};
    };
    return AnswerOf(request, BYTE_STREAM, feed, std::move(view));
}

LiveResources::LiveResources(ZuRest::ResourceRouter& usedRouter, Sensor const& sensor,
                             SourceDestinations const& destinations)
    : router(usedRouter),
      dataSources(sensor.Frames(), feed, &DataSources::OfSensor, destinations),
      profile(sensor.Frames(), feed),
      rangeImage(sensor, feed)
{
    router.Register(SOURCES_ROUTE, dataSources);
    router.Register("/profile", profile);
    router.Register("/rangeimage", rangeImage);
}

void LiveResources::EndStreams()
{
    feed.Stop();
}

LiveResources::~LiveResources()
{
    feed.Stop(); // first: its messages are made by the resources
    router.Deregister("/rangeimage", false);
    router.Deregister("/profile", false);
    router.Deregister("/datasources", true);
}

} // namespace ZuHost
