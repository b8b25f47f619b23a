#pragma once

#include "ZuControl/Control/ControlVitals.h"
#include "wApi/wMutex.h"

#include <string>

namespace ZuControl
{

/// Keeps how the rounds of the metrics go: when one began, at which protocol it is, when one was done and when one failed.
///
/// One thread makes rounds; any may read.
class MetricsPulse final
{
public:
    /// A round, from its construction to its destruction; one that is not done by then has failed.
    class Round final
    {
    public:
        explicit Round(MetricsPulse& usedPulse);
        ~Round();

        Round(Round const&) = delete;
        Round& operator=(Round const&) = delete;

        void ComeTo(std::string const& typeName);
        void Done();

    private:
        MetricsPulse& pulse;
        bool isDone = false;
    };

    MetricsPulse(); ///< the rounds are to begin now

    MetricsPulse(MetricsPulse const&) = delete;
    MetricsPulse& operator=(MetricsPulse const&) = delete;

    ControlVitals::Metrics Read() const;

private:
    mutable Zu::Mutex lock; // a leaf
    ControlVitals::Metrics metrics ZU_GUARDED_BY(lock);
};

} // namespace ZuControl
