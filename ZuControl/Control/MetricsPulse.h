#pragma once

#include "ZuControl/Control/ControlVitals.h"
#include "wApi/wMutex.h"

#include <string>

namespace ZuControl
{

/// Records the progress of the metrics rounds: the start of the running round, the protocol that it has reached, and
/// the times of the last successful and of the last failed round.
///
/// One thread makes rounds; any thread may read.
class MetricsPulse final
{
public:
    /// One round, from its construction to its destruction. A round that is destroyed without `Done` has failed.
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

    MetricsPulse(); ///< takes the present time as that of the last successful round

    MetricsPulse(MetricsPulse const&) = delete;
    MetricsPulse& operator=(MetricsPulse const&) = delete;

    ControlVitals::Metrics Read() const;

private:
    mutable Zu::Mutex lock; // a leaf
    ControlVitals::Metrics metrics ZU_GUARDED_BY(lock);
};

} // namespace ZuControl
