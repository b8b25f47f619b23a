#pragma once

#include "Host/Live/DataSources.h"
#include "Host/Live/LiveFeed.h"
#include "Host/Live/LiveMessages.h"
#include "ZuRest/DocumentResourceBase.h"
#include "ZuRest/IFeedResource.h"

#include <nlohmann/json.hpp>

namespace ZuRest
{
class ResourceRouter;
}

namespace ZuHost
{

class Sensor;
class SourceDestinations;

/// "/datasources/:source": the data sources, their last values and where they go; each is also a stream of events.
class DataSourcesResource final : public ZuRest::DocumentResourceBase, public ZuRest::IFeedResource
{
public:
    static constexpr double MAX_RATE_HZ = 20;

    /// All arguments, and the objects that `newList` uses, outlive this.
    DataSourcesResource(FrameHistory const& shownFrames, LiveFeed& usedFeed, DataSources::List newList,
                        SourceDestinations const& usedDestinations);
    ~DataSourcesResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    bool WantsFeed(ZuRest::Request const& request) const override;
    ZuRest::Answer AnswerFeed(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    nlohmann::json DocumentOf(DataSource const& source, nlohmann::json destinations) const;
    DataSource Require(std::string const& id) const;

    FrameHistory const& frames;
    LiveFeed& feed;
    DataSources::List const list;
    SourceDestinations const& destinations;
};

/// "/profile": the newest profile, as a document and as a stream of binary messages.
class ProfileResource final : public ZuRest::DocumentResourceBase, public ZuRest::IFeedResource
{
public:
    static constexpr double MAX_RATE_HZ = 25;
    static constexpr uint64 MAX_POINTS = 4096;

    /// Both arguments outlive this.
    ProfileResource(FrameHistory const& shownFrames, LiveFeed& usedFeed);
    ~ProfileResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    bool WantsFeed(ZuRest::Request const& request) const override;
    ZuRest::Answer AnswerFeed(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    FrameHistory const& frames;
    LiveFeed& feed;
};

/// "/rangeimage": the last profiles as a grid, as a document and as a stream of binary messages.
class RangeImageResource final : public ZuRest::DocumentResourceBase, public ZuRest::IFeedResource
{
public:
    static constexpr uint64 MAX_COLUMNS = 1024;

    /// Both arguments outlive this.
    RangeImageResource(Sensor const& shownSensor, LiveFeed& usedFeed);
    ~RangeImageResource() override;

    nlohmann::json Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response) override;
    bool WantsFeed(ZuRest::Request const& request) const override;
    ZuRest::Answer AnswerFeed(ZuRest::Request const& request, ZuRest::RequestInfo const& info) override;

private:
    Sensor const& sensor;
    LiveFeed& feed;
};

/// Registers the resources that show what the sensor measures.
class LiveResources final
{
public:
    /// All arguments outlive this.
    LiveResources(ZuRest::ResourceRouter& usedRouter, Sensor const& sensor, SourceDestinations const& destinations);
    ~LiveResources(); ///< ends the streams and removes its routes

    /// Ends all streams. Call it before the server stops: a body of a stream must not outlive the server's threads.
    void EndStreams();

    LiveResources(LiveResources const&) = delete;
    LiveResources& operator=(LiveResources const&) = delete;

private:
    ZuRest::ResourceRouter& router;
    LiveFeed feed;
    DataSourcesResource dataSources;
    ProfileResource profile;
    RangeImageResource rangeImage;
};

} // namespace ZuHost
