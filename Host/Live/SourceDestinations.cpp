#include "Host/Live/SourceDestinations.h"

#include "Host/Live/DataSources.h"
#include "Host/Module/SensorModule.h"
#include "Host/Sensor/FramePublisher.h"
#include "ZuControl/Control/ControlModule.h"
#include "ZuControl/Control/IControlInstance.h"
#include "ZuControl/Control/IControlManager.h"
#include "ZuControl/ControlProtocol/Layout.h"
#include "ZuCore/DataSourceHash.h"
#include "ZuRest/IDocumentResource.h"
#include "ZuRest/IResource.h"
#include "ZuRest/Path.h"
#include "ZuRest/ResourceRouter.h"
#include "ZuRest/ResponseInfo.h"

#include <algorithm>
#include <utility>

namespace ZuHost
{

using Json = nlohmann::json;

namespace
{

/// What a protocol got last of a data source; null if its last results do not have it.
Json DeliveredOf(std::string const& source, ZuControl::LastDelivery::Content const& last)
{
    Json const frame = last.stamp.has_value() ? Json(last.stamp->stampCounter) : Json();
    Json const ageSec = DataSources::AgeSec(last.usec);
    if (source == FramePublisher::STAMP_SOURCE)
    {
        return last.stamp.has_value()
                   ? Json{{"stamp", DataSources::StampOf(*last.stamp)}, {"frame", frame}, {"ageSec", ageSec}}
                   : Json();
    }
    uint64 const id = ZuCore::DataSourceHash(source);
    auto const found = std::ranges::find(last.measurements, id, &ZuControl::LastDelivery::Measurement::dataSource);
    return found != last.measurements.end() ? Json{{"value", DataSources::ValueOf(found->value)},
                                                   {"decision", found->decision},
                                                   {"frame", frame},
                                                   {"ageSec", ageSec}}
                                            : Json();
}

} // namespace

SourceDestinations::SourceDestinations(SensorModule& usedModule) : module(usedModule)
{
}

SourceDestinations::~SourceDestinations() = default;

SourceDestinations::Found SourceDestinations::Collect() const
{
    Found found;
    for (std::string const& typeName : module.Controls().List())
    {
        AddProtocol(typeName, found);
    }
    return found;
}

void SourceDestinations::AddProtocol(std::string const& typeName, Found& found) const
{
    Json const plc = DocumentAt(ZuRest::Path::Format("/controls/:protocol/plc", {typeName}));
    if (plc.is_null())
    {
        return;
    }
    using Kind = ZuControl::ControlProtocol::Layout::Kind;
    bool const isEnabled = module.Controls().GetInstance(typeName).IsEnabled();
    Json const metrics = DocumentAt(ZuRest::Path::Format("/controls/:protocol/metrics", {typeName}));
    auto const lastDelivery = module.Module().LastDeliveryTo(typeName);
    Json const topic = metrics.is_object() ? metrics.value("dataTopic", Json()) : Json();
    for (Json const& layout : plc.at("layouts"))
    {
        bool const isAssembly = layout.at("kind") == static_cast<uint32>(Kind::BLOCKS);
        bool const hasTexts = layout.at("kind") == static_cast<uint32>(Kind::TEXTS);
        for (Json const& entry : layout.at("entries"))
        {
            std::string const source = entry.at("source");
            if (source.empty())
            {
                continue;
            }
            Json& list = found[source];
            list.push_back({{"protocol", typeName},
                            {"enabled", isEnabled},
                            {"outputId", entry.at(hasTexts ? "textId" : "outputId")},
                            {"registers", entry.at("registers")},
                            {"type", entry.at("type")},
                            {"registerAssembly", isAssembly ? layout.at("id") : Json()},
                            {"topic", topic == "" ? Json() : topic},
                            {"delivered", DeliveredOf(source, lastDelivery)}});
        }
    }
}

/// The document of a resource of the module; null if it has none. The locks of requests are not taken: they are held
/// while a protocol starts.
Json SourceDestinations::DocumentAt(std::string const& path) const
{
    try
    {
        auto const match = module.Router().Find(path);
        if (match.has_value() && match->resource->DocumentProvider() != nullptr)
        {
            ZuRest::ResponseInfo response;
            return match->resource->DocumentProvider()->Document({path, match->keys, false}, response);
        }
    }
    catch (...) // a protocol without such a document
    {
    }
    return {};
}

} // namespace ZuHost
