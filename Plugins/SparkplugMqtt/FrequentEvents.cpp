#include "Plugins/SparkplugMqtt/FrequentEvents.h"

#include <utility>

namespace SparkplugMqtt
{

FrequentEvents::FrequentEvents(ZuCommon::ProblemsManager& usedProblems, uint64 leastEvents, std::string usedText)
    : least(leastEvents), text(std::move(usedText)), problem(usedProblems)
{
}

FrequentEvents::~FrequentEvents() = default;

void FrequentEvents::Look(uint64 total, uint64 nowUsec)
{
    bool const isFrequent = total - windowTotal >= least;
    bool const isOver = nowUsec >= windowEndUsec;
    if (isFrequent || isOver)
    {
        problem.Show(isFrequent ? text : "");
    }
    if (isOver)
    {
        windowTotal = total;
        windowEndUsec = nowUsec + WINDOW_USEC;
    }
}

} // namespace SparkplugMqtt
