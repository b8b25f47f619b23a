#include "Host/Resources/ScannersResource.h"
#include "Host/Sensor/Aligner.h"

#include "ZuApi/Exception.h"
#include "ZuApi/JsonSerializer.h"
#include "ZuApi/Params/Group.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResponseInfo.h"
#include "ZuScan/ScanEngines.h"
#include "ZuScan/Sensor.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using ZuScan::Internal::ScanEngineInstance;
using ZuScan::Internal::ScanEngineManager;
using ZuScan::Internal::ScannerInstance;

constexpr char const* INFO_ACTION = "scannerInfo";

void ForEachScanner(ScanEngineManager const& engines,
                    std::function<void(ScanEngineInstance&, ScannerInstance&)> const& visit)
{
    for (std::string const& engine : engines.List())
    {
        ScanEngineInstance& instance = engines.GetInstance(engine);
        for (std::string const& scanner : instance.ListScanners())
        {
            visit(instance, instance.FindScanner(scanner));
        }
    }
}

/// Shows the ids of the actions, and the result of the action "scannerInfo".
void ShowActions(ZuScan::IActionTarget& target, Json& document)
{
    Json& ids = document["actions"] = Json::array();
    for (ZuScan::ActionInfo const& action : target.ListActions())
    {
        ids.push_back(action.Id());
        if (action.Id() != INFO_ACTION)
        {
            continue;
        }
        if (auto const info = target.InvokeAction(INFO_ACTION, target.GetActionParams(INFO_ACTION)); info != nullptr)
        {
            document["info"] = Zu::Properties::JsonSerializer::Serialize(*info);
        }
    }
}

Json Show(ScanEngineInstance const& engine, ScannerInstance& scanner)
{
    Json document{{"id", scanner.Id()},
                  {"present", true},
                  {"engine", engine.Id()},
                  {"sensors", scanner.ListSensors()},
                  {"alignment", TextFor(scanner.Scanner().GetAlignState())}};
    if (ZuScan::IActionTarget* const target = scanner.Scanner().ActionTarget(); target != nullptr)
    {
        ShowActions(*target, document);
    }
    return document;
}

} // namespace

ScannersResource::ScannersResource(ScanEngineManager const& shownEngines) : engines(shownEngines)
{
}

ScannersResource::~ScannersResource() = default;

Json ScannersResource::Document(ZuRest::RequestInfo const& request, ZuRest::ResponseInfo& response)
{
    if (std::string const* const id = request.FindKey("id"); id != nullptr)
    {
        return ShowOne(*id);
    }
    ForEachScanner(engines, [&response](ScanEngineInstance const& /*engine*/, ScannerInstance const& scanner) {
        response.Embed("item", ZuRest::Path::Format("/scanners/:id", {scanner.Id()}), true, nullptr);
    });
    return Json::object();
}

Json ScannersResource::ShowOne(std::string const& id) const
{
    Json found;
    uint64 number = 0;
    ForEachScanner(engines, [&](ScanEngineInstance const& engine, ScannerInstance& scanner) {
        if (found.is_null() && (scanner.Id() == id || std::to_string(number) == id))
        {
            found = Show(engine, scanner);
        }
        ++number;
    });
    for (; number < DEVICES && found.is_null(); ++number)
    {
        if (std::to_string(number) == id)
        {
            found = {{"id", id}, {"present", false}};
        }
    }
    if (found.is_null())
    {
        ZU_THROW(Zu::Status::NOT_FOUND, "There is no scanner '%s'.", id.c_str());
    }
    return found;
}

} // namespace ZuHost
