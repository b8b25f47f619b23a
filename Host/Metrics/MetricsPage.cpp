#include "Host/Metrics/MetricsPage.h"

#include "Host/Metrics/PrometheusText.h"
#include "ZuApi/Exception.h"
#include "ZuApi/Guard.h"
#include "ZuRest/Answer.h"
#include "ZuRest/IDocumentResource.h"
#include "ZuRest/IResource.h"
#include "ZuRest/Path.h"
#include "ZuRest/RequestInfo.h"
#include "ZuRest/ResourceRouter.h"
#include "ZuRest/ResponseInfo.h"
#include "wApi/wTime.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace ZuHost
{

namespace
{

using Json = nlohmann::json;
using Type = PrometheusText::Type;

constexpr char const* ROUTE = "/metrics";
constexpr char const* PREFIX = "zucontrol_";
constexpr char const* TIME_SUFFIX = "_usec"; // ending of the names of numbers in microseconds

std::string TextIn(Json const& schema, char const* key)
{
    return schema.is_object() ? schema.value(key, std::string()) : std::string();
}

Type TypeOf(Json const& schema)
{
    std::string const kind = TextIn(schema, "kind");
    return kind == "counter" ? Type::COUNTER : kind == "gauge" ? Type::GAUGE : Type::UNTYPED;
}

/// Adds a number in the units and names that Prometheus users expect: times in seconds, counters with the suffix
/// "_total".
void AddNumber(PrometheusText& text, std::string name, Json const& schema, PrometheusText::Labels const& labels,
               Json const& number)
{
    std::string value = number.is_number_float() ? PrometheusText::Number(number.get<double>()) : number.dump();
    if (name.ends_with(TIME_SUFFIX) && number.is_number_unsigned())
    {
        name.replace(name.rfind(TIME_SUFFIX), std::string::npos, "_seconds");
        value = PrometheusText::Seconds(number.get<uint64>());
    }
    Type const type = TypeOf(schema);
    std::string const title = TextIn(schema, "title");
    text.Add(type == Type::COUNTER ? name + "_total" : name, type, title.empty() ? "Not described." : title + '.',
             labels, value);
}

void AddRecord(PrometheusText& text, std::string const& prefix, Json const& schema,
               PrometheusText::Labels const& labels, Json const& record)
{
    Json const none = Json::object();
    auto const properties = schema.find("properties");
    std::string const label = TextIn(schema, "label");
    for (auto const& [key, value] : record.items())
    {
        Json const& described = properties != schema.end() && properties->contains(key) ? (*properties)[key] : none;
        PrometheusText::Labels all = labels;
        std::string name = prefix + '_' + PrometheusText::NameOf(key);
        if (!label.empty())
        {
            PrometheusText::AddLabel(all, label, key);
            name = prefix;
        }
        if (value.is_object())
        {
            AddRecord(text, name, described, all, value);
        }
        else if (value.is_number())
        {
            AddNumber(text, std::move(name), described, all, value);
        }
    }
}

/// Adds the record that the protocol's metrics resource shows. The request processor is not used: there the page would
/// wait while the protocol starts.
void AddRecordOf(PrometheusText& text, ZuRest::ResourceRouter const& router, std::string const& typeName)
{
    constexpr bool WITH_SCHEMA = true;
    std::string const path = ZuRest::Path::Format("/controls/:protocol/metrics", {typeName});
    auto const match = router.Find(path);
    if (!match.has_value() || match->resource->DocumentProvider() == nullptr)
    {
        ZU_THROW(Zu::Status::NOT_FOUND);
    }
    ZuRest::ResponseInfo response;
    Json record = match->resource->DocumentProvider()->Document({path, match->keys, WITH_SCHEMA}, response);
    Json const schema = record.value("_schema", Json::object());
    record.erase("_schema");
    AddRecord(text, std::string(PREFIX) + "protocol", schema, {{"protocol", typeName}}, record);
}

void AddProtocol(PrometheusText& text, ZuRest::ResourceRouter const& router, std::string const& typeName)
{
    bool isReadable = true;
    try
    {
        AddRecordOf(text, router, typeName);
    }
    catch (...) // a failing protocol loses only its own rows; "metrics_readable" tells so
    {
        isReadable = false;
    }
    text.Add(std::string(PREFIX) + "metrics_readable", Type::GAUGE,
             "Whether the metrics of the protocol could be read: 1 or 0.", {{"protocol", typeName}},
             isReadable ? "1" : "0");
}

void AddModule(PrometheusText& text, ZuControl::ControlStatistics const& statistics)
{
    auto const count = [&text](std::string const& name, char const* help, PrometheusText::Labels const& labels,
                               uint64 number) {
        text.Add(PREFIX + name + "_total", Type::COUNTER, help, labels, std::to_string(number));
    };
    count("result_sets", "Result sets that came to the fan-out.", {}, statistics.resultSets);
    count("result_items", "Results in these sets.", {}, statistics.resultItems);
    count("result_items_handed_on", "Results handed on, counted for each protocol that wants them.", {},
          statistics.itemsHandedOn);
    char const* const operations = "Operations on the system, by how they ended.";
    count("operations", operations, {{"result", "succeeded"}}, statistics.operationsSucceeded);
    count("operations", operations, {{"result", "failed"}}, statistics.operationsFailed);
    count("operations", operations, {{"result", "refused"}}, statistics.operationsRefused);
    std::string const age = std::string(PREFIX) + "dispatcher_batch_age_seconds";
    char const* const ageHelp = "Age of batches at their hand-over to the protocol, since the first set of each.";
    for (auto const& protocol : statistics.protocols)
    {
        PrometheusText::Labels const labels{{"protocol", protocol.typeName}};
        count("dispatcher_batches", "Batches of result sets handed over to the protocol.", labels, protocol.batches);
        count("dispatcher_result_sets", "Result sets in these batches.", labels, protocol.resultSets);
        text.Add(age, Type::SUMMARY, ageHelp, labels, PrometheusText::Seconds(protocol.ageUsec), "_sum");
        text.Add(age, Type::SUMMARY, ageHelp, labels, std::to_string(protocol.batches), "_count");
    }
}

/// Adds the age of the records. It grows while a protocol hangs in the update of its record.
void AddAge(PrometheusText& text, ZuControl::ControlVitals::Metrics const& metrics)
{
    uint64 const nowUsec = wTime_NowUsec();
    uint64 const ageUsec = nowUsec > metrics.lastDoneUsec ? nowUsec - metrics.lastDoneUsec : 0;
    text.Add(std::string(PREFIX) + "metrics_age_seconds", Type::GAUGE,
             "Time since the metrics of all protocols were last brought up to date.", {},
             PrometheusText::Seconds(ageUsec));
}

void AddSensor(PrometheusText& text, SensorFigures const& figures)
{
    auto const add = [&text](char const* name, Type type, char const* help, PrometheusText::Labels const& labels,
                             std::string const& value) {
        text.Add(std::string(PREFIX) + name, type, help, labels, value);
    };
    add("sensor_running", Type::GAUGE, "Whether the sensor scans: 1 or 0.", {},
        figures.state == ZuCore::RunState::RUNNING ? "1" : "0");
    add("sensor_failed", Type::GAUGE, "Whether the scan has ended by a failure: 1 or 0.", {},
        figures.state == ZuCore::RunState::ERROR ? "1" : "0");
    add("sensor_profiles_total", Type::COUNTER, "Profiles taken since the start of the scan.", {},
        std::to_string(figures.taken));
    add("sensor_missed_profiles_total", Type::COUNTER, "Profiles missed since the start of the scan.", {},
        std::to_string(figures.missed));
    add("result_sets_dropped_total", Type::COUNTER, "Result sets dropped before the fan-out.", {},
        std::to_string(figures.droppedSets));
    for (std::size_t i = 0; i < figures.digitalOutputs.size(); ++i)
    {
        add("digital_output_high", Type::GAUGE, "Whether the pin of the digital output is high: 1 or 0.",
            {{"output", std::to_string(i)}}, figures.digitalOutputs[i].isHigh ? "1" : "0");
    }
    for (std::size_t i = 0; i < figures.digitalOutputs.size(); ++i)
    {
        add("digital_output_pulses_total", Type::COUNTER, "Pulses that the digital output has given.",
            {{"output", std::to_string(i)}}, std::to_string(figures.digitalOutputs[i].pulses));
    }
    for (std::size_t i = 0; i < figures.analogOutputs.size(); ++i)
    {
        constexpr double MILLI = 1e-3;
        add("analog_output_amperes", Type::GAUGE, "Current that the analog output drives.",
            {{"output", std::to_string(i)}}, PrometheusText::Number(MILLI * figures.analogOutputs[i].milliamperes));
    }
    for (std::size_t i = 0; i < figures.serialOutputs.size(); ++i)
    {
        add("serial_output_bytes_total", Type::COUNTER, "Bytes that the serial output has sent.",
            {{"output", std::to_string(i)}}, std::to_string(figures.serialOutputs[i].bytes));
    }
}

} // namespace

MetricsPage::MetricsPage(ZuRest::ResourceRouter& usedRouter,
                         std::function<ZuControl::ControlStatistics()> newStatistics,
                         std::function<ZuControl::ControlVitals()> newVitals, std::function<SensorFigures()> newFigures,
                         std::function<uint64()> newCountWrongTokens)
    : router(usedRouter),
      statistics(std::move(newStatistics)),
      vitals(std::move(newVitals)),
      figures(std::move(newFigures)),
      countWrongTokens(std::move(newCountWrongTokens))
{
    router.Register(ROUTE, *this);
}

MetricsPage::~MetricsPage()
{
    ZU_GUARD_DESTRUCTOR([this] { router.Deregister(ROUTE, false); });
}

std::vector<std::string> MetricsPage::ContentMethods() const
{
    return {"GET"};
}

ZuRest::Answer MetricsPage::AnswerContent(ZuRest::Request const& /*request*/, ZuRest::RequestInfo const& /*info*/)
{
    ZuControl::ControlStatistics const counted = statistics();
    PrometheusText text;
    AddModule(text, counted);
    AddAge(text, vitals().metrics);
    AddSensor(text, figures());
    text.Add(std::string(PREFIX) + "http_wrong_tokens_total", Type::COUNTER, "REST requests with a wrong token.", {},
             std::to_string(countWrongTokens()));
    for (auto const& protocol : counted.protocols)
    {
        AddProtocol(text, router, protocol.typeName);
    }
    ZuRest::Answer answer;
    answer.contentType = PrometheusText::CONTENT_TYPE;
    answer.body = text.Write();
    return answer;
}

} // namespace ZuHost
