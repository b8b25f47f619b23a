#pragma once

#include "Support/RecordingSink.h"
#include "Support/Refusal.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"
#include "ZuControl/ControlProtocol/IProtocolOutput.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ZuTest
{

/// An output map as clients use it: arguments and contents are JSON. Records the log.
class OutputMapFixture : public testing::Test
{
protected:
    using Json = nlohmann::json;
    using Serializer = Zu::Properties::JsonSerializer;
    using List = std::vector<Json>; // not a JSON array, where braces around a single item do not make a list
    using Ids = std::vector<std::pair<Json, std::string>>;

    virtual ZuControl::ControlProtocol::IProtocolOutput& Map() = 0;

    Refusal Add(Json const& item)
    {
        args = Map().CreateOutputMapItemArgs();
        Serializer::Deserialize(*args, item);
        return RefusalOf([this] { Map().Add(*args); });
    }

    Refusal AddAll(List const& items)
    {
        FillList(items, false);
        return RefusalOf([this] { Map().AddAll(*args); });
    }

    Refusal Remove(Json const& id)
    {
        args = Map().CreateOutputMapItemArgs();
        Serializer::Deserialize(*args, {{"outputId", id}});
        return RefusalOf([this] { Map().Remove(*args); });
    }

    Refusal UpdateId(Json const& oldId, Json const& newId, bool autoShift = false)
    {
        return UpdateList({{{"outputId", oldId}}, {{"outputId", newId}}}, autoShift);
    }

    Refusal UpdateList(List const& items, bool autoShift = false)
    {
        FillList(items, autoShift);
        return RefusalOf([this] { Map().UpdateId(*args); });
    }

    /// Adds items before the test begins.
    void Place(List const& items)
    {
        for (Json const& item : items)
        {
            ASSERT_EQ(Add(item), done) << item;
        }
        log.Clear();
    }

    /// The document of the map.
    Json Document()
    {
        Map().BeginLock();
        Json const document = Serializer::Serialize(Map().OutputMap());
        Map().EndLock();
        return document;
    }

    /// Ids and sources in item order.
    Ids Items()
    {
        return IdsOf(Document());
    }

    /// Ids and sources of the list that was the last argument, as the map has left it.
    Ids ArgumentItems()
    {
        return IdsOf(Serializer::Serialize(*args));
    }

    LogRecorder log;
    std::shared_ptr<Zu::Params::Group> args;
    Refusal const done{1, ""};
    std::vector<LogLine> const noLines{};

private:
    void FillList(List const& items, bool autoShift)
    {
        args = Map().CreateOutputsArgs();
        Serializer::Deserialize(*args, {{"map", Json(items)}, {"autoShift", autoShift}});
    }

    static Ids IdsOf(Json const& document)
    {
        Ids ids;
        for (Json const& item : document.at("map"))
        {
            ids.emplace_back(item.at("outputId"), item.at("source").get<std::string>());
        }
        return ids;
    }
};

} // namespace ZuTest
