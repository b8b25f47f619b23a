#include "Host/Metrics/MetricsPage.h"

#include "Support/FakeResource.h"
#include "ZuRest/Answer.h"
#include "ZuRest/Request.h"
#include "ZuRest/ResourceRequestProcessor.h"
#include "ZuRest/ResourceRouter.h"
#include "wApi/wTime.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

namespace ZuHost
{

class MetricsPageTest : public testing::Test
{
protected:
    static constexpr uint64 HOUR_USEC = 3'600'000'000;

    MetricsPageTest()
    {
        router.Register("/controls/:protocol/metrics", metrics);
        statistics.protocols = {{"X", 0, 0, 0}};
        vitals.metrics.lastDoneUsec = wTime_AfterUsec(HOUR_USEC); // in the future, so that every age is 0
        metrics.document = [this](ZuRest::RequestInfo const& request, ZuRest::ResponseInfo&) {
            EXPECT_TRUE(request.wantsSchema);
            return documents.at(*request.FindKey("protocol"));
        };
    }

    ~MetricsPageTest() override
    {
        router.Deregister("/controls", true);
    }

    ZuRest::Answer Get()
    {
        ZuRest::Request request;
        request.path = "/metrics";
        return ZuRest::ResourceRequestProcessor(router).Process(request).answer;
    }

    /// The lines of the protocols' records.
    std::string OfProtocols()
    {
        return LinesWith("zucontrol_protocol_");
    }

    std::string LinesWith(std::string const& text)
    {
        std::string const body = Get().body;
        std::string found;
        for (std::size_t begin = 0; begin < body.size();)
        {
            std::size_t const end = body.find('\n', begin) + 1;
            std::string const line = body.substr(begin, end - begin);
            found += line.find(text) != std::string::npos ? line : "";
            begin = end;
        }
        return found;
    }

    ZuRest::ResourceRouter router;
    ZuTest::FakeResource metrics;
    std::map<std::string, nlohmann::json> documents;
    ZuControl::ControlStatistics statistics;
    ZuControl::ControlVitals vitals;
    SensorFigures figures;
    uint64 wrongTokens = 0;
    MetricsPage page{router, [this] { return statistics; }, [this] { return vitals; }, [this] { return figures; },
                     [this] { return wrongTokens; }};
};

TEST_F(MetricsPageTest, TellsWhatTheModuleHasCounted)
{
    statistics = {7, 42, 30, 3, 2, 1, {{"X", 5, 6, 12'500}, {"Y", 0, 0, 0}}};
    wrongTokens = 4;
    documents = {{"X", nlohmann::json::object()}, {"Y", nlohmann::json::object()}};

    ZuRest::Answer const answer = Get();

    EXPECT_EQ(answer.status, 200u);
    EXPECT_EQ(answer.contentType, "text/plain; version=0.0.4; charset=utf-8");
    EXPECT_EQ(
        answer.body,
        "# HELP zucontrol_dispatcher_batch_age_seconds Age of batches at their hand-over to the protocol, since the "
        "first set of each.\n"
        "# TYPE zucontrol_dispatcher_batch_age_seconds summary\n"
        "zucontrol_dispatcher_batch_age_seconds_sum{protocol=\"X\"} 0.012500\n"
        "zucontrol_dispatcher_batch_age_seconds_count{protocol=\"X\"} 5\n"
        "zucontrol_dispatcher_batch_age_seconds_sum{protocol=\"Y\"} 0.000000\n"
        "zucontrol_dispatcher_batch_age_seconds_count{protocol=\"Y\"} 0\n"
        "# HELP zucontrol_dispatcher_batches_total Batches of result sets handed over to the protocol.\n"
        "# TYPE zucontrol_dispatcher_batches_total counter\n"
        "zucontrol_dispatcher_batches_total{protocol=\"X\"} 5\n"
        "zucontrol_dispatcher_batches_total{protocol=\"Y\"} 0\n"
        "# HELP zucontrol_dispatcher_result_sets_total Result sets in these batches.\n"
        "# TYPE zucontrol_dispatcher_result_sets_total counter\n"
        "zucontrol_dispatcher_result_sets_total{protocol=\"X\"} 6\n"
        "zucontrol_dispatcher_result_sets_total{protocol=\"Y\"} 0\n"
        "# HELP zucontrol_http_wrong_tokens_total REST requests with a wrong token.\n"
        "# TYPE zucontrol_http_wrong_tokens_total counter\n"
        "zucontrol_http_wrong_tokens_total 4\n"
        "# HELP zucontrol_metrics_age_seconds Time since the metrics of all protocols were last brought up to date.\n"
        "# TYPE zucontrol_metrics_age_seconds gauge\n"
        "zucontrol_metrics_age_seconds 0.000000\n"
        "# HELP zucontrol_metrics_readable Whether the metrics of the protocol could be read: 1 or 0.\n"
        "# TYPE zucontrol_metrics_readable gauge\n"
        "zucontrol_metrics_readable{protocol=\"X\"} 1\n"
        "zucontrol_metrics_readable{protocol=\"Y\"} 1\n"
        "# HELP zucontrol_operations_total Operations on the system, by how they ended.\n"
        "# TYPE zucontrol_operations_total counter\n"
        "zucontrol_operations_total{result=\"succeeded\"} 3\n"
        "zucontrol_operations_total{result=\"failed\"} 2\n"
        "zucontrol_operations_total{result=\"refused\"} 1\n"
        "# HELP zucontrol_result_items_handed_on_total Results handed on, counted for each protocol that wants "
        "them.\n"
        "# TYPE zucontrol_result_items_handed_on_total counter\n"
        "zucontrol_result_items_handed_on_total 30\n"
        "# HELP zucontrol_result_items_total Results in these sets.\n"
        "# TYPE zucontrol_result_items_total counter\n"
        "zucontrol_result_items_total 42\n"
        "# HELP zucontrol_result_sets_dropped_total Result sets dropped before the fan-out.\n"
        "# TYPE zucontrol_result_sets_dropped_total counter\n"
        "zucontrol_result_sets_dropped_total 0\n"
        "# HELP zucontrol_result_sets_total Result sets that came to the fan-out.\n"
        "# TYPE zucontrol_result_sets_total counter\n"
        "zucontrol_result_sets_total 7\n"
        "# HELP zucontrol_sensor_failed Whether the scan has ended by a failure: 1 or 0.\n"
        "# TYPE zucontrol_sensor_failed gauge\n"
        "zucontrol_sensor_failed 0\n"
        "# HELP zucontrol_sensor_missed_profiles_total Profiles missed since the start of the scan.\n"
        "# TYPE zucontrol_sensor_missed_profiles_total counter\n"
        "zucontrol_sensor_missed_profiles_total 0\n"
        "# HELP zucontrol_sensor_profiles_total Profiles taken since the start of the scan.\n"
        "# TYPE zucontrol_sensor_profiles_total counter\n"
        "zucontrol_sensor_profiles_total 0\n"
        "# HELP zucontrol_sensor_running Whether the sensor scans: 1 or 0.\n"
        "# TYPE zucontrol_sensor_running gauge\n"
        "zucontrol_sensor_running 0\n");
}

TEST_F(MetricsPageTest, TellsWhatTheSensorTakesMissesAndDrives)
{
    documents = {{"X", nlohmann::json::object()}};
    figures.state = ZuCore::RunState::ERROR;
    figures.taken = 12;
    figures.missed = 3;
    figures.droppedSets = 4;
    figures.digitalOutputs = {{true, false, 5, 0.5}, {true, true}};
    figures.analogOutputs = {{true, 12.5}};
    figures.serialOutputs = {{true, 7, "abc"}};

    EXPECT_EQ(LinesWith("zucontrol_sensor_failed 1"), "zucontrol_sensor_failed 1\n");
    EXPECT_EQ(LinesWith("zucontrol_sensor_profiles_total 12"), "zucontrol_sensor_profiles_total 12\n");
    EXPECT_EQ(LinesWith("zucontrol_sensor_missed_profiles_total 3"), "zucontrol_sensor_missed_profiles_total 3\n");
    EXPECT_EQ(LinesWith("sets_dropped_total 4"), "zucontrol_result_sets_dropped_total 4\n");
    EXPECT_EQ(LinesWith("output_high{"),
              "zucontrol_digital_output_high{output=\"0\"} 0\nzucontrol_digital_output_high{output=\"1\"} 1\n");
    EXPECT_EQ(LinesWith("pulses_total{"), "zucontrol_digital_output_pulses_total{output=\"0\"} "
                                          "5\nzucontrol_digital_output_pulses_total{output=\"1\"} 0\n");
    EXPECT_EQ(LinesWith("amperes{"), "zucontrol_analog_output_amperes{output=\"0\"} 0.0125\n");
    EXPECT_EQ(LinesWith("serial_output_bytes_total{"), "zucontrol_serial_output_bytes_total{output=\"0\"} 7\n");
}

TEST_F(MetricsPageTest, TakesTheNumbersOfAProtocolAsItsSchemaDescribesThem)
{
    documents["X"] = nlohmann::json::parse(R"({
        "requests": 5, "clients": 2, "lastHandlingUsec": 1500, "listening": "127.0.0.1:1502", "isOpen": true, "ratio": 0.5,
        "_schema": {"type": "object", "properties": {
            "requests": {"type": "integer", "kind": "counter", "title": "Requests answered"},
            "clients": {"type": "integer", "kind": "gauge", "title": "Clients now"},
            "lastHandlingUsec": {"type": "integer", "kind": "gauge", "title": "Time of the last request"},
            "listening": {"type": "string"}}}})");

    EXPECT_EQ(OfProtocols(), "# HELP zucontrol_protocol_clients Clients now.\n"
                             "# TYPE zucontrol_protocol_clients gauge\n"
                             "zucontrol_protocol_clients{protocol=\"X\"} 2\n"
                             "# HELP zucontrol_protocol_last_handling_seconds Time of the last request.\n"
                             "# TYPE zucontrol_protocol_last_handling_seconds gauge\n"
                             "zucontrol_protocol_last_handling_seconds{protocol=\"X\"} 0.001500\n"
                             "# HELP zucontrol_protocol_ratio Not described.\n"
                             "# TYPE zucontrol_protocol_ratio untyped\n"
                             "zucontrol_protocol_ratio{protocol=\"X\"} 0.5\n"
                             "# HELP zucontrol_protocol_requests_total Requests answered.\n"
                             "# TYPE zucontrol_protocol_requests_total counter\n"
                             "zucontrol_protocol_requests_total{protocol=\"X\"} 5\n");
}

TEST_F(MetricsPageTest, GoesDownIntoRecordsAndTakesTheKeysOfALabelledOneForItsValues)
{
    documents["X"] = nlohmann::json::parse(R"({
        "exceptions": {"1": 3, "6": 4}, "lifetime": {"requests": 9},
        "_schema": {"properties": {
            "exceptions": {"label": "code", "properties": {"1": {"kind": "counter", "title": "Refused"},
                                                           "6": {"kind": "counter", "title": "Refused"}}},
            "lifetime": {"properties": {"requests": {"kind": "counter", "title": "All"}}}}}})");

    EXPECT_EQ(OfProtocols(), "# HELP zucontrol_protocol_exceptions_total Refused.\n"
                             "# TYPE zucontrol_protocol_exceptions_total counter\n"
                             "zucontrol_protocol_exceptions_total{protocol=\"X\",code=\"1\"} 3\n"
                             "zucontrol_protocol_exceptions_total{protocol=\"X\",code=\"6\"} 4\n"
                             "# HELP zucontrol_protocol_lifetime_requests_total All.\n"
                             "# TYPE zucontrol_protocol_lifetime_requests_total counter\n"
                             "zucontrol_protocol_lifetime_requests_total{protocol=\"X\"} 9\n");
}

TEST_F(MetricsPageTest, LeavesOutTheRowsOfAProtocolThatCannotBeReadAndSaysSo)
{
    statistics.protocols = {{"Int", 0, 0, 0}, {"None", 0, 0, 0}, {"Odd", 0, 0, 0}, {"X", 0, 0, 0}};
    documents["Odd"] = {{"requests", 1}, {"_schema", {{"properties", {{"requests", {{"title", 7}}}}}}}};
    documents["X"] = {{"controlDrops", 1}};
    metrics.document = [this](ZuRest::RequestInfo const& request, ZuRest::ResponseInfo&) {
        if (*request.FindKey("protocol") == "Int")
        {
            throw 7;
        }
        return documents.at(*request.FindKey("protocol"));
    };

    EXPECT_EQ(Get().status, 200u);
    EXPECT_EQ(OfProtocols(), "# HELP zucontrol_protocol_control_drops Not described.\n"
                             "# TYPE zucontrol_protocol_control_drops untyped\n"
                             "zucontrol_protocol_control_drops{protocol=\"X\"} 1\n");
    EXPECT_EQ(LinesWith("zucontrol_metrics_readable"),
              "# HELP zucontrol_metrics_readable Whether the metrics of the protocol could be read: 1 or 0.\n"
              "# TYPE zucontrol_metrics_readable gauge\n"
              "zucontrol_metrics_readable{protocol=\"Int\"} 0\n"
              "zucontrol_metrics_readable{protocol=\"None\"} 0\n"
              "zucontrol_metrics_readable{protocol=\"Odd\"} 0\n"
              "zucontrol_metrics_readable{protocol=\"X\"} 1\n");
}

TEST_F(MetricsPageTest, StaysWellFormedWhateverKeysAndLabelsAreCalled)
{
    std::string const typeName = "X\"\\\n\r\xFF";
    statistics.protocols = {{typeName, 0, 0, 0}};
    metrics.document = [](ZuRest::RequestInfo const&, ZuRest::ResponseInfo&) {
        nlohmann::json record = nlohmann::json::parse(R"({
            "resultSets": 1, "result_sets": 2, "result sets": 3, "": 4, "\u00e4": 5, "a\nb": 6, "x} 1\nevil": 7,
            "twice": {"1": {"2": 8}}, "odd": {"k\"\\\n\r": 9}, "number": {"a": 10}, "none": {"a": 11}, "own": {"a": 12},
            "kindA": 13, "kind_a_total": 14,
            "_schema": {"properties": {
                "twice": {"label": "code", "properties": {"1": {"label": "code", "properties": {"2": {}}}}},
                "odd": {"label": "a b\nc"}, "number": {"label": "1st"}, "none": {"label": "__"}, "own": {"label": "protocol"},
                "resultSets": {"title": "A\nB\rC\\"}, "kindA": {"kind": "counter"}, "kind_a_total": {"kind": "gauge"}}}})");
        record["bad"]["\xFE"] = 15;
        record["_schema"]["properties"]["bad"] = {{"label", "l"}, {"title", "\xFD"}};
        return record;
    };

    std::string const body = Get().body;

    std::set<std::string> samples;
    std::istringstream lines(body);
    std::regex const comment(R"(# (HELP|TYPE) [a-z_][a-z0-9_]* [^\r]+)");
    std::string const label = R"([a-z][a-z0-9_]*="([^"\\\r]|\\\\|\\"|\\n)*")";
    std::regex const sample("([a-z_][a-z0-9_]*(\\{" + label + "(," + label + ")*\\})?) [-+.0-9eInfNa]+");
    for (std::string line; std::getline(lines, line);)
    {
        std::smatch parts;
        bool const isSample = std::regex_match(line, parts, sample);
        EXPECT_TRUE(isSample || std::regex_match(line, comment)) << line;
        EXPECT_TRUE(!isSample || samples.insert(parts[1]).second) << "twice: " << line;
    }
    std::string const escaped = R"(protocol="X\"\\\n )"
                                "\xEF\xBF\xBD\"";
    for (std::string const& expected :
         {"result_sets{" + escaped + "} 3", "twice{" + escaped + R"(,code="1",code_="2"} 8)",
          "odd{" + escaped + R"(,a_b_c="k\"\\\n "} 9)", "number{" + escaped + R"(,label_1st="a"} 10)",
          "none{" + escaped + R"(,label___="a"} 11)", "own{" + escaped + R"(,protocol_="a"} 12)",
          "bad{" + escaped + ",l=\"\xEF\xBF\xBD\"} 15"})
    {
        EXPECT_NE(body.find("\nzucontrol_protocol_" + expected + "\n"), std::string::npos) << expected << "\n" << body;
    }
}

TEST_F(MetricsPageTest, TellsHowLongTheMetricsHaveStoodStill)
{
    uint64 const doneUsec = vitals.metrics.lastDoneUsec = wTime_NowUsec();
    std::string const name = "zucontrol_metrics_age_seconds ";
    auto const age = [&] {
        std::string const lines = LinesWith(name);
        return std::stod(lines.substr(lines.rfind(name) + name.size()));
    };

    double const first = age();
    double const second = age();

    EXPECT_LE(first, second);
    EXPECT_LE(second * 1e6, static_cast<double>(wTime_NowUsec() - doneUsec) + 1);
    EXPECT_GT(second, 0);
}

TEST_F(MetricsPageTest, HasItsRouteForAsLongAsItLives)
{
    ZuRest::ResourceRouter other;
    {
        MetricsPage const shortLived(
            other, [this] { return statistics; }, [this] { return vitals; }, [this] { return figures; },
            [] { return uint64{0}; });
        EXPECT_TRUE(other.Find("/metrics").has_value());
    }
    EXPECT_FALSE(other.Find("/metrics").has_value());
}

} // namespace ZuHost
