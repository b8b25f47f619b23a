#include "Host/Watch/Diagnosis.h"

#include "ZuControl/Control/ControlVitals.h"

#include <gtest/gtest.h>

#include <functional>

namespace ZuHost
{

using Sentences = std::set<std::string>;
using ZuControl::ControlVitals;

constexpr uint64 NOW = 1'000'000'000;
constexpr uint64 SECOND = 1'000'000;

constexpr char const* DEAD =
    "a gets no more results, since it failed over one. Disable it and enable it again; if that does not "
    "help, restart the host.";
constexpr char const* HELD = "a does not come to an end with its results; newer ones wait for it.";
constexpr char const* JOB = "The job load that a asked for has not ended within 60 seconds; every other operation is "
                            "refused meanwhile.";
constexpr char const* STANDING = "b does not come to an end with its metrics; those of all services stand still.";
constexpr char const* FAILING = "b fails over its metrics; they stand still, and so may those of others.";
constexpr char const* BROKEN = "Service b failed in its operation OnStopScan. This lasts until the operation succeeds.";
constexpr char const* SILENT = "Nothing brings the metrics up to date any more.";

/// A healthy module with the protocols "a" and "b".
ControlVitals Well()
{
    ControlVitals vitals;
    vitals.dispatchers = {{"a", false, 0}, {"b", false, NOW - 3'000}};
    vitals.metrics.typeName = "b";
    vitals.metrics.lastDoneUsec = NOW - 250'000;
    return vitals;
}

struct DiagnosisCase
{
    char const* name;
    std::function<void(ControlVitals&)> spoil;
    Sentences sentences;
};

class Diagnosis : public testing::TestWithParam<DiagnosisCase>
{
};

TEST_P(Diagnosis, FindsWhatIsWrongAndNothingElse)
{
    ControlVitals vitals = Well();

    GetParam().spoil(vitals);

    EXPECT_EQ(Diagnose(vitals, WatchLimits(), NOW), GetParam().sentences);
}

INSTANTIATE_TEST_SUITE_P(
    Every, Diagnosis,
    testing::Values(
        DiagnosisCase{"Well", [](auto&) {}, {}},
        DiagnosisCase{"OperationOfAProtocolFailed",
                      [](auto& v) {
                          v.faults = {{"b", "OnStopScan"}};
                      },
                      {BROKEN}},
        DiagnosisCase{"DispatcherDead", [](auto& v) { v.dispatchers[0].hasDied = true; }, {DEAD}},
        DiagnosisCase{"HandlerSlow", [](auto& v) { v.dispatchers[0].busySinceUsec = NOW - SECOND; }, {}},
        DiagnosisCase{"HandlerStuck", [](auto& v) { v.dispatchers[0].busySinceUsec = NOW - SECOND - 1; }, {HELD}},
        DiagnosisCase{"HandlerBusyOnlyAfterTheLook", [](auto& v) { v.dispatchers[0].busySinceUsec = NOW + 5; }, {}},
        DiagnosisCase{"OperationLong",
                      [](auto& v) {
                          v.operation = {"a", "job load", NOW - 60 * SECOND};
                      },
                      {}},
        DiagnosisCase{"OperationTooLong",
                      [](auto& v) {
                          v.operation = {"a", "job load", NOW - 60 * SECOND - 1};
                      },
                      {JOB}},
        DiagnosisCase{
            "OperationOfNobodyWeKnow",
            [](auto& v) {
                v.operation = {"", "restart", 1};
            },
            {"The restart that a service asked for has not ended within 60 seconds; every other operation is refused "
             "meanwhile."}},
        DiagnosisCase{
            "OperationOfTheHost",
            [](auto& v) {
                v.operation = {"", "restart", 1, true};
            },
            {"The restart that a REST client asked for has not ended within 60 seconds; every other operation is "
             "refused meanwhile."}},
        DiagnosisCase{"RoundLong", [](auto& v) { v.metrics.roundSinceUsec = NOW - SECOND; }, {}},
        DiagnosisCase{"RoundTooLong",
                      [](auto& v) {
                          v.metrics.roundSinceUsec = NOW - SECOND - 1;
                          v.metrics.lastDoneUsec = NOW - 2 * SECOND;
                      },
                      {STANDING}},
        DiagnosisCase{"MetricsFailed",
                      [](auto& v) {
                          v.metrics.lastFailureUsec = NOW - 100'000;
                          v.metrics.failedTypeName = "b";
                          v.metrics.typeName = "a";
                          v.metrics.lastDoneUsec = NOW - 90 * SECOND;
                      },
                      {FAILING}},
        DiagnosisCase{"MetricsFailAgainAndAgain",
                      [](auto& v) {
                          v.metrics.lastFailureUsec = NOW - 300'000;
                          v.metrics.failedTypeName = "b";
                          v.metrics.roundSinceUsec = NOW - 50'000;
                          v.metrics.lastDoneUsec = NOW - 90 * SECOND;
                      },
                      {FAILING}},
        DiagnosisCase{"MetricsFailedLongAgo",
                      [](auto& v) {
                          v.metrics.lastFailureUsec = NOW - SECOND - 1;
                          v.metrics.failedTypeName = "b";
                      },
                      {}},
        DiagnosisCase{"RoundsEndedForGood", [](auto& v) { v.metrics.lastDoneUsec = NOW - SECOND - 1; }, {SILENT}},
        DiagnosisCase{"RoundsEndedForGoodBehindAFailure",
                      [](auto& v) {
                          v.metrics.lastFailureUsec = NOW - SECOND - 1;
                          v.metrics.lastDoneUsec = NOW - SECOND - 2;
                      },
                      {SILENT}},
        DiagnosisCase{"AllAtOnce",
                      [](auto& v) {
                          v.dispatchers[0] = {"a", true, NOW - 5 * SECOND};
                          v.operation = {"a", "job load", 1};
                          v.metrics.roundSinceUsec = 1;
                      },
                      {DEAD, JOB, STANDING}}),
    [](auto const& tested) { return std::string(tested.param.name); });

TEST(DiagnosisLimits, AreThoseThatAreGiven)
{
    ControlVitals vitals = Well();
    vitals.dispatchers[0].busySinceUsec = NOW - 3 * SECOND;
    vitals.operation = {"a", "scan stop", NOW - 3 * SECOND};
    WatchLimits limits;
    limits.standstillUsec = 3 * SECOND;
    limits.operationUsec = SECOND;

    Sentences const sentences = Diagnose(vitals, limits, NOW);

    EXPECT_EQ(sentences,
              (Sentences{"The scan stop that a asked for has not ended within 1 second; every other operation is "
                         "refused meanwhile."}));
}

} // namespace ZuHost
