#include "Host/Watch/Diagnosis.h"

#include "ZuControl/Control/ControlVitals.h"

namespace ZuHost
{

namespace
{

using ZuControl::ControlVitals;
using Sentences = std::set<std::string>;

/// Whether an activity that began at `sinceUsec` (0: none) has taken longer than its limit.
bool LastsTooLong(uint64 sinceUsec, uint64 limitUsec, uint64 nowUsec)
{
    // `sinceUsec` may be later than `nowUsec`: the threads go on while the watch looks.
    return sinceUsec != 0 && nowUsec > sinceUsec && nowUsec - sinceUsec > limitUsec;
}

/// "60 seconds"
std::string Seconds(uint64 usec)
{
    uint64 const seconds = usec / 1'000'000;
    return std::to_string(seconds) + (seconds == 1 ? " second" : " seconds");
}

void LookAtDispatcher(ControlVitals::Dispatcher const& dispatcher, WatchLimits const& limits, uint64 nowUsec,
                      Sentences& sentences)
{
    if (dispatcher.hasDied)
    {
        sentences.insert(
            dispatcher.typeName +
            " gets no more results, since it failed over one. Disable it and enable it again; if that does "
            "not help, restart the host."); // a service with a recorded problem keeps its dispatcher
    }
    else if (LastsTooLong(dispatcher.busySinceUsec, limits.standstillUsec, nowUsec))
    {
        sentences.insert(dispatcher.typeName + " does not come to an end with its results; newer ones wait for it.");
    }
}

void LookAtOperation(ControlVitals::Operation const& operation, WatchLimits const& limits, uint64 nowUsec,
                     Sentences& sentences)
{
    if (LastsTooLong(operation.sinceUsec, limits.operationUsec, nowUsec))
    {
        std::string const service = operation.isOfHost           ? "a REST client"
                                    : operation.typeName.empty() ? "a service"
                                                                 : operation.typeName;
        sentences.insert("The " + std::string(operation.name) + " that " + service +
                         " asked for has not ended within " + Seconds(limits.operationUsec) +
                         "; every other operation is refused meanwhile.");
    }
}

void LookAtMetrics(ControlVitals::Metrics const& metrics, WatchLimits const& limits, uint64 nowUsec,
                   Sentences& sentences)
{
    bool const hasFailed = metrics.lastFailureUsec != 0;
    if (LastsTooLong(metrics.roundSinceUsec, limits.standstillUsec, nowUsec))
    {
        sentences.insert(metrics.typeName +
                         " does not come to an end with its metrics; those of all services stand still.");
    }
    else if (hasFailed && !LastsTooLong(metrics.lastFailureUsec, limits.standstillUsec, nowUsec))
    {
        sentences.insert(metrics.failedTypeName +
                         " fails over its metrics; they stand still, and so may those of others.");
    }
    else if (metrics.roundSinceUsec == 0 && LastsTooLong(metrics.lastDoneUsec, limits.standstillUsec, nowUsec))
    {
        sentences.insert("Nothing brings the metrics up to date any more.");
    }
}

void LookAtFaults(std::vector<ControlVitals::Fault> const& faults, Sentences& sentences)
{
    for (ControlVitals::Fault const& fault : faults)
    {
        sentences.insert("Service " + fault.typeName + " failed in its operation " + fault.operation +
                         ". This lasts until the operation succeeds.");
    }
}

} // namespace

Sentences Diagnose(ControlVitals const& vitals, WatchLimits const& limits, uint64 nowUsec)
{
    Sentences sentences;
    for (ControlVitals::Dispatcher const& dispatcher : vitals.dispatchers)
    {
        LookAtDispatcher(dispatcher, limits, nowUsec, sentences);
    }
    LookAtOperation(vitals.operation, limits, nowUsec, sentences);
    LookAtMetrics(vitals.metrics, limits, nowUsec, sentences);
    LookAtFaults(vitals.faults, sentences);
    return sentences;
}

} // namespace ZuHost
